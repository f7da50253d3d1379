// The consistency audit.
#ifndef NAMES_AUDIT_HPP
#define NAMES_AUDIT_HPP

#include "names/storage/record.hpp"

namespace names {

// NamesManager_AssertConsistency; the number of its reports.
int32_t countViolations(const NamesManager *mgr);

}  // namespace names

#endif
