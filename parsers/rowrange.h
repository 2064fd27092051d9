#pragma once

#include <limits>

/** nCount rows of a picture, starting at nFirst. */
struct RowRange {
    int nFirst = 0;
    int nCount = 0;

    int End() const { return nFirst + nCount; }
    static RowRange All() { return {0, std::numeric_limits<int>::max()}; }
    bool Contains(int row) const { return row >= nFirst && row < End(); }
};
