#pragma once

#include "burnsettings.h"

#include <libsubtitleframe.h>

/**
 * A handle of the library with its burner, or none: then both are null.
 *
 * Handles must be created and destroyed on one thread at a time in the whole process, and while no other thread is in
 * any function of the library. Each element has its own streaming thread, so these functions take a lock that all
 * elements share.
 */
typedef struct {
    void *pSubtitle;
    void *pBurner;
    gint nWidth; /**< of the picture as it is shown */
    gint nHeight;
    gint nPixelWidth; /**< shape of its pixels */
    gint nPixelHeight;
} BurnHandle;

/** Replaces the handle by a new one of that size. FALSE without memory; there is no handle then. */
gboolean BurnHandleMake(BurnHandle *pHandle, gint nWidth, gint nHeight);
void BurnHandleDestroy(BurnHandle *pHandle);

/** Sets the shape of pixels in the picture as it is shown. Does nothing without a handle. */
void BurnHandleSetPixelAspect(BurnHandle *pHandle, gint nPixelWidth, gint nPixelHeight);

/**
 * Passes those settings to the library whose bits are set in nChanged.
 *
 * @param bOpen  whether to open the file as well.
 * @return FALSE if the file was to be opened, and the library refuses it or it does not have the track.
 */
gboolean BurnHandleApply(const BurnHandle *pHandle, const BurnSettings *pSettings, gboolean bOpen);

/** Returns 1 if a subtitle is due at a time in milliseconds, 0 if not, -1 without memory. */
gint BurnHandleSeek(const BurnHandle *pHandle, glong nMilliseconds);

/** Draws what is due. FALSE, with the frame untouched, if the library refuses the frame or has no memory. */
gboolean BurnHandleDraw(const BurnHandle *pHandle, const SubtitleFrame *pFrame);
