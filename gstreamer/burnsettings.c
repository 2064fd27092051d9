#include "burnsettings.h"

#include <gst/video/video.h>
#include <libsubtitleframe.h>

enum {
    PropFile = 1,
    PropTrack,
    PropAlpha,
    PropPos,
    PropFontFamily,
    PropFontSize,
    PropBold,
    PropItalic,
    PropFontColor,
    PropOutlineColor,
    PropWhiteLevel,
    PropOrientation,
    PropLook,
    PropOutlineWidth
};

enum {
    DefaultAlpha = 255,
    DefaultPos = 85,
    DefaultFontColor = 0xFFFFFF,
    DefaultOutlineColor = 0x0A0A0A,
    DefaultWhite = 203,
    DefaultOutlineWidth = 2
};

static const struct {
    glong nOffset;
    guint nChange;
} properties[] = {[PropFile] = {G_STRUCT_OFFSET(BurnSettings, pFile), ChangedFile},
                  [PropTrack] = {G_STRUCT_OFFSET(BurnSettings, nTrack), ChangedFile},
                  [PropAlpha] = {G_STRUCT_OFFSET(BurnSettings, nAlpha), ChangedAlpha},
                  [PropPos] = {G_STRUCT_OFFSET(BurnSettings, nPos), ChangedPos},
                  [PropFontFamily] = {G_STRUCT_OFFSET(BurnSettings, pFamily), ChangedFont},
                  [PropFontSize] = {G_STRUCT_OFFSET(BurnSettings, nPoints), ChangedFont},
                  [PropBold] = {G_STRUCT_OFFSET(BurnSettings, bBold), ChangedFont},
                  [PropItalic] = {G_STRUCT_OFFSET(BurnSettings, bItalic), ChangedFont},
                  [PropFontColor] = {G_STRUCT_OFFSET(BurnSettings, nFontColor), ChangedFontColor},
                  [PropOutlineColor] = {G_STRUCT_OFFSET(BurnSettings, nOutlineColor), ChangedOutlineColor},
                  [PropWhiteLevel] = {G_STRUCT_OFFSET(BurnSettings, dWhite), ChangedWhite},
                  [PropOrientation] = {G_STRUCT_OFFSET(BurnSettings, nOrientation), 0},
                  [PropLook] = {G_STRUCT_OFFSET(BurnSettings, nLook), ChangedLook},
                  [PropOutlineWidth] = {G_STRUCT_OFFSET(BurnSettings, dOutlineWidth), ChangedLook}};

static GType LookType(void)
{
    static const GEnumValue values[] = {
        {SUBTITLE_LOOK_EXACT, "The library's own pixels", "exact"},
        {SUBTITLE_LOOK_NATURAL, "Smooth text, all texts that are due, DVD pictures in their colours", "natural"},
        {0, NULL, NULL}};
    static gsize type = 0;
    if (g_once_init_enter(&type))
        g_once_init_leave(&type, g_enum_register_static("SubtitleBurnLook", values));
    return type;
}

void BurnSettingsInstall(GObjectClass *pClass)
{
    const GParamFlags flags = G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING;
    GParamSpec *listSpecs[G_N_ELEMENTS(properties)] = {NULL};
    listSpecs[PropFile] = g_param_spec_string(
        "location", "Location", "Subtitle file; setting it reads it anew, none shows no subtitles", NULL, flags);
    listSpecs[PropTrack] = g_param_spec_int(
        "track", "Track", "Subtitle track: of a container counted from 0, of an .idx file the number after \"index:\"",
        0, G_MAXINT, 0, flags);
    listSpecs[PropAlpha] =
        g_param_spec_int("alpha", "Alpha", "Opacity; counts twice, so that 128 covers a frame by a quarter", 0, 255,
                         DefaultAlpha, flags);
    listSpecs[PropPos] = g_param_spec_int("pos", "Position",
                                          "Centre line of the subtitle, in percent of the frame's height from the top",
                                          0, 100, DefaultPos, flags);
    listSpecs[PropFontFamily] =
        g_param_spec_string("font-family", "Font family", "Font of text, none for the default font", NULL, flags);
    listSpecs[PropFontSize] = g_param_spec_int(
        "font-size", "Font size", "Size of text in points of 4/3 pixels, 0 for a 14th of the frame's height", 0,
        G_MAXINT, 0, flags);
    listSpecs[PropBold] = g_param_spec_boolean("bold", "Bold", "Bold text", FALSE, flags);
    listSpecs[PropItalic] = g_param_spec_boolean("italic", "Italic", "Italic text", FALSE, flags);
    listSpecs[PropFontColor] = g_param_spec_uint("font-color", "Font colour", "Colour of text, 0xRRGGBB", 0, 0xFFFFFF,
                                                 DefaultFontColor, flags);
    listSpecs[PropOutlineColor] =
        g_param_spec_uint("outline-color", "Outline colour",
                          "Colour of the outline of text, 0xRRGGBB; 0 is no outline, 0x010101 the darkest", 0, 0xFFFFFF,
                          DefaultOutlineColor, flags);
    listSpecs[PropWhiteLevel] =
        g_param_spec_double("white-level", "White level", "Level of white text on PQ and HLG frames, in cd/m2", 1,
                            10000, DefaultWhite, flags);
    listSpecs[PropOrientation] = g_param_spec_enum(
        "orientation", "Orientation", "How the picture is turned when it is shown; auto is as tags say",
        GST_TYPE_VIDEO_ORIENTATION_METHOD, GST_VIDEO_ORIENTATION_AUTO, flags);
    listSpecs[PropLook] =
        g_param_spec_enum("look", "Look", "How subtitles look", LookType(), SUBTITLE_LOOK_EXACT, flags);
    listSpecs[PropOutlineWidth] =
        g_param_spec_double("outline-width", "Outline width",
                            "Width of the outline in the natural look, in pixels of a picture of 720 rows", 0, 20,
                            DefaultOutlineWidth, flags);
    g_object_class_install_properties(pClass, G_N_ELEMENTS(listSpecs), listSpecs);
}

void BurnSettingsInit(BurnSettings *pSettings)
{
    *pSettings = (BurnSettings){.nAlpha = DefaultAlpha,
                                .nPos = DefaultPos,
                                .nFontColor = DefaultFontColor,
                                .nOutlineColor = DefaultOutlineColor,
                                .dWhite = DefaultWhite,
                                .nLook = SUBTITLE_LOOK_EXACT,
                                .dOutlineWidth = DefaultOutlineWidth,
                                .nOrientation = GST_VIDEO_ORIENTATION_AUTO};
}

void BurnSettingsClear(BurnSettings *pSettings)
{
    g_free(pSettings->pFile);
    g_free(pSettings->pFamily);
    pSettings->pFile = NULL;
    pSettings->pFamily = NULL;
}

void BurnSettingsSet(BurnSettings *pSettings, guint nProperty, const GValue *pValue, const GParamSpec *pSpec)
{
    void *pMember = G_STRUCT_MEMBER_P(pSettings, properties[nProperty].nOffset);
    switch (G_TYPE_FUNDAMENTAL(G_PARAM_SPEC_VALUE_TYPE(pSpec))) {
    case G_TYPE_STRING:
        g_free(*(gchar **)pMember);
        *(gchar **)pMember = g_value_dup_string(pValue);
        break;
    case G_TYPE_INT:
        *(gint *)pMember = g_value_get_int(pValue);
        break;
    case G_TYPE_UINT:
        *(guint *)pMember = g_value_get_uint(pValue);
        break;
    case G_TYPE_DOUBLE:
        *(gdouble *)pMember = g_value_get_double(pValue);
        break;
    case G_TYPE_ENUM:
        *(gint *)pMember = g_value_get_enum(pValue);
        break;
    default:
        *(gboolean *)pMember = g_value_get_boolean(pValue);
    }
    pSettings->nChanged |= properties[nProperty].nChange;
    /* SetSubtitleFontParam() ignores size 0. Only a new handle has the default size. */
    if (nProperty == PropFontSize && pSettings->nPoints == 0)
        pSettings->nChanged |= ChangedToDefault;
}

void BurnSettingsGet(const BurnSettings *pSettings, guint nProperty, GValue *pValue, const GParamSpec *pSpec)
{
    const void *pMember = G_STRUCT_MEMBER_P(pSettings, properties[nProperty].nOffset);
    switch (G_TYPE_FUNDAMENTAL(G_PARAM_SPEC_VALUE_TYPE(pSpec))) {
    case G_TYPE_STRING:
        g_value_set_string(pValue, *(gchar *const *)pMember);
        break;
    case G_TYPE_INT:
        g_value_set_int(pValue, *(const gint *)pMember);
        break;
    case G_TYPE_UINT:
        g_value_set_uint(pValue, *(const guint *)pMember);
        break;
    case G_TYPE_DOUBLE:
        g_value_set_double(pValue, *(const gdouble *)pMember);
        break;
    case G_TYPE_ENUM:
        g_value_set_enum(pValue, *(const gint *)pMember);
        break;
    default:
        g_value_set_boolean(pValue, *(const gboolean *)pMember);
    }
}

BurnSettings BurnSettingsTake(BurnSettings *pSettings, gboolean bAll)
{
    BurnSettings taken = *pSettings;
    if (bAll || taken.nChanged & ChangedToDefault)
        taken.nChanged = ChangedAll;
    taken.pFile = taken.nChanged != 0 ? g_strdup(pSettings->pFile) : NULL;
    taken.pFamily = taken.nChanged != 0 ? g_strdup(pSettings->pFamily) : NULL;
    pSettings->nChanged = 0;
    return taken;
}

gboolean BurnSettingsHasFile(const BurnSettings *pSettings)
{
    return pSettings->pFile && *pSettings->pFile;
}
