#pragma once

#include <gst/gst.h>

/** What the library has to be given, a bit for each of its setters. */
enum {
    ChangedFile = 1,
    ChangedAlpha = 2,
    ChangedPos = 4,
    ChangedFont = 8,
    ChangedFontColor = 16,
    ChangedOutlineColor = 32,
    ChangedWhite = 64,
    ChangedToDefault = 128, /**< to what no setter sets, only a new handle has */
    ChangedLook = 256,
    ChangedAll = 511
};

/** The values of the element's properties. None of the functions takes a lock. */
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
    gint nOrientation; /**< GstVideoOrientationMethod; nothing that a handle has */
    guint nChanged;    /**< since they were last taken */
} BurnSettings;

/** Adds the properties to a class. */
void BurnSettingsInstall(GObjectClass *pClass);

void BurnSettingsInit(BurnSettings *pSettings);
void BurnSettingsClear(BurnSettings *pSettings);

/** One of the properties, by the number and the description that it was installed with. */
void BurnSettingsSet(BurnSettings *pSettings, guint nProperty, const GValue *pValue, const GParamSpec *pSpec);
void BurnSettingsGet(const BurnSettings *pSettings, guint nProperty, GValue *pValue, const GParamSpec *pSpec);

/**
 * Copies the settings, with the bits of those that changed since the last time, or of all. Where nothing did, the copy
 * has none of its strings.
 *
 * @return the copy, to be cleared.
 */
BurnSettings BurnSettingsTake(BurnSettings *pSettings, gboolean bAll);

/** Whether there is a file to open. */
gboolean BurnSettingsHasFile(const BurnSettings *pSettings);
