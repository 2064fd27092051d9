#pragma once

#include <gst/gst.h>

/** Which settings changed since the library got them: a bit for each of its setters. */
enum {
    ChangedFile = 1,
    ChangedAlpha = 2,
    ChangedPos = 4,
    ChangedFont = 8,
    ChangedFontColor = 16,
    ChangedOutlineColor = 32,
    ChangedWhite = 64,
    ChangedToDefault = 128, /**< back to a default that no setter takes, only a new handle has */
    ChangedLook = 256,
    ChangedAll = 511
};

/** The values of the element's properties. The functions below take no lock. */
typedef struct {
    gchar *pFile;
    gchar *pFamily;
    gint nTrack;
    gint nAlpha;
    gint nPos;
    gint nPoints;
    gboolean bBold;
    gboolean bItalic;
    guint nFontColor;
    guint nOutlineColor;
    gdouble dWhite;
    gint nLook; /**< SUBTITLE_LOOK_... */
    gdouble dOutlineWidth;
    gint nOrientation; /**< GstVideoOrientationMethod; not passed to the handle */
    guint nChanged;    /**< what changed since BurnSettingsTake() */
} BurnSettings;

/** Adds the properties to a class. */
void BurnSettingsInstall(GObjectClass *pClass);

void BurnSettingsInit(BurnSettings *pSettings);
void BurnSettingsClear(BurnSettings *pSettings);

/** Sets or gets one property, by the number and the GParamSpec that it was installed with. */
void BurnSettingsSet(BurnSettings *pSettings, guint nProperty, const GValue *pValue, const GParamSpec *pSpec);
void BurnSettingsGet(const BurnSettings *pSettings, guint nProperty, GValue *pValue, const GParamSpec *pSpec);

/**
 * Copies the settings, with the bits of those that changed since the last call (all bits if @p bAll), and clears these
 * bits in the original. The strings are copied only if a bit is set.
 *
 * @return the copy; the caller clears it with BurnSettingsClear().
 */
BurnSettings BurnSettingsTake(BurnSettings *pSettings, gboolean bAll);

/** Whether there is a file to open. */
gboolean BurnSettingsHasFile(const BurnSettings *pSettings);
