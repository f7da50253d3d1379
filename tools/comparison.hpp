// How two lists of names differ.
#ifndef TOOLS_COMPARISON_HPP
#define TOOLS_COMPARISON_HPP

#include <cstdint>
#include <functional>
#include <vector>

#include "names/names_manager.h"

namespace tool {

// The names of a list that do not stand at the same index in the other one, in order.
struct Rest {
    std::vector<int32_t> indices;
    std::vector<const char *> names;  // the texts are the manager's
};

// Every occurrence of a repeated name counts. Occurrences at the same index are the same. Of the
// others as many are paired as both lists have, and what is left over is only in A or only in B.
struct Comparison {
    int64_t nSame = 0;
    int64_t nMoved = 0;  // paired, at different indices
    int64_t nOnlyInA = 0;
    int64_t nOnlyInB = 0;
    Rest a;
    std::vector<int32_t> partners;  // for each name of a: the index of its partner in B, or -1
    Rest b;                         // names with a partner are NULL
};

// Compares two managers, which must not change while the comparison is used.
Comparison compareNames(NamesManager *a, NamesManager *b);

// 0-based indices; -1 where the name is missing.
struct Difference {
    int32_t indexInA;
    int32_t indexInB;
    const char *szName;
};
using DifferenceVisitor = std::function<void(const Difference &difference)>;

// These call visit for all differences of their kind in the order of the indices, the moved names
// in the order of A.
void visitMoved(const Comparison &comparison, const DifferenceVisitor &visit);
void visitOnlyInA(const Comparison &comparison, const DifferenceVisitor &visit);
void visitOnlyInB(const Comparison &comparison, const DifferenceVisitor &visit);

}  // namespace tool

#endif
