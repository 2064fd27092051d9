#pragma once

#include "burnsettings.h"

#include <libsubtitleframe.h>

/**
 * A handle of the library with its burner; none while both are null.
 *
 * Handles are made and destroyed on one thread at a time in the whole process, and while no other thread is in any
 * function of the library. Each element has a streaming thread of its own, so these functions take a lock that all
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

/** Makes one of that size in the place of the earlier one; FALSE, with none, when there is no memory. */
gboolean BurnHandleMake(BurnHandle *pHandle, gint nWidth, gint nHeight);
void BurnHandleDestroy(BurnHandle *pHandle);

/** Sets the shape of the pixels of the picture as it is shown. Without a handle it does nothing. */
void BurnHandleSetPixelAspect(BurnHandle *pHandle, gint nPixelWidth, gint nPixelHeight);

/**
 * Gives the library the settings whose bits are set.
 *
 * @param bOpen  whether to open the file, too.
 * @return FALSE when the file was to be opened and is refused or does not have the track.
 */
gboolean BurnHandleApply(const BurnHandle *pHandle, const BurnSettings *pSettings, gboolean bOpen);

/** Whether a subtitle is due at a time in milliseconds: 1, 0; -1 without memory. */
gint BurnHandleSeek(const BurnHandle *pHandle, glong nMilliseconds);

/** Draws it; FALSE, with the frame untouched, when the library refuses the frame or has no memory. */
gboolean BurnHandleDraw(const BurnHandle *pHandle, const SubtitleFrame *pFrame);
