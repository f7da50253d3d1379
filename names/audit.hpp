// The consistency audit.
#ifndef NAMES_AUDIT_HPP
#define NAMES_AUDIT_HPP

#include "names/storage/record.hpp"

namespace names {

// NamesManager_AssertConsistency. Returns the number of its reports.
int32_t countViolations(const NamesManager *mgr);

// Says whether it would report nothing.
bool isConsistent(const NamesManager *mgr);

}  // namespace names

#endif
