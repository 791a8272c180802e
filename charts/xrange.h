#pragma once

#include <algorithm>

/// A range of x in logical pixels; empty as made.
struct XRange {
    double left = 0.0;
    double right = -1.0;

    bool isEmpty() const { return !(left <= right); }
    void unite(XRange other)
    {
        if (other.isEmpty())
            return;
        *this = isEmpty() ? other : XRange{std::min(left, other.left), std::max(right, other.right)};
    }
    XRange grownBy(double margin) const { return isEmpty() ? *this : XRange{left - margin, right + margin}; }
};
