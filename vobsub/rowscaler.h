#pragma once

#include "parsers/rowrange.h"

struct SwsContext;

/** A picture of one byte a pixel, without padding between its rows. */
struct GreyPlane {
    unsigned char *pBytes;
    int nWidth;
    int nHeight;
};

/**
 * The rows of the scaled picture that may differ from 0 if only @p rows of the original do.
 * @param fromRows, toRows  the pictures' heights.
 */
RowRange ScaledRows(const RowRange &rows, int fromRows, int toRows);

/**
 * Scales only some rows of the result, to the same bytes as if everything were scaled.
 * @param context  made for pictures of these sizes.
 * @param from     some bytes after it must be readable too.
 * @param rows     of the result; others may be written as well.
 * @return false if memory runs out.
 */
bool ScaleRows(SwsContext *context, const GreyPlane &from, const GreyPlane &to, const RowRange &rows);
