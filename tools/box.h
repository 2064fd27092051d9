#pragma once

/** A rectangle of pixels; right and bottom are the first column and row outside. */
struct Box {
    int nLeft = 0;
    int nTop = 0;
    int nRight = 0;
    int nBottom = 0;

    bool Empty() const { return nRight <= nLeft || nBottom <= nTop; }
};
