/* Read in front of every source of the libraries, whose symbols are hidden but for what the public
 * headers declare. */
#pragma GCC visibility push(default)
#include "files/names_file.h"
#include "host/host_hash_map.h"
#include "host/host_lock.h"
#include "host/host_memory.h"
#include "host/host_pool.h"
#include "host/host_problem.h"
#include "host/host_report.h"
#include "host/host_stream.h"
#include "host/host_text.h"
#include "names/names_manager.h"
#pragma GCC visibility pop
