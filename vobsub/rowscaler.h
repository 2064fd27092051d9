#pragma once

#include "parsers/rowrange.h"

struct SwsContext;

/** A picture of one byte a pixel, whose rows follow each other. */
struct GreyPlane {
    unsigned char *pBytes;
    int nWidth;
    int nHeight;
};

/** The rows of a picture of @p toRows rows that may show something of these ones, when it is scaled from @p fromRows. */
RowRange ScaledRows(const RowRange &rows, int fromRows, int toRows);

/**
 * Scales only what is needed for some rows of the result, which are as when everything is scaled.
 * @param context  made for pictures of these sizes.
 * @param from     all of it is readable, and some bytes behind it.
 * @return false without memory.
 */
bool ScaleRows(SwsContext *context, const GreyPlane &from, const GreyPlane &to, const RowRange &rows);
