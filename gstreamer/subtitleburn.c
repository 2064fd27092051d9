#include "subtitleburn.h"

#include "burnsettings.h"

#include <libsubtitle.h>

#include <glib/gstdio.h>
#include <unistd.h>

GST_DEBUG_CATEGORY_STATIC(subtitleburn_debug);
#define GST_CAT_DEFAULT subtitleburn_debug

struct _SubtitleBurn {
    GstVideoFilter parent;

    /* Under the object's lock: any thread sets properties. */
    BurnSettings settings;

    /* Of the streaming thread; and of the one that stops the element, for which that one stands still. */
    void *pHandle;
    gint nWidth;
    gint nHeight;
};

G_DEFINE_TYPE(SubtitleBurn, subtitle_burn, GST_TYPE_VIDEO_FILTER)
GST_ELEMENT_REGISTER_DEFINE_WITH_CODE(subtitleburn, "subtitleburn", GST_RANK_NONE, SUBTITLE_TYPE_BURN,
                                      GST_DEBUG_CATEGORY_INIT(subtitleburn_debug, "subtitleburn", 0,
                                                              "burns subtitles into frames"))

static const char RefusedFile[] = "The subtitle file \"%s\" cannot be read or is refused.";

/*
 * Handles are made and destroyed on one thread at a time in the whole process, and while no other thread is in any
 * function of the library. Each element has a streaming thread of its own, so all calls of the library are between one
 * of these pairs. The lock alone would let an element wait without end while others draw; so it waits at the door, and
 * nobody passes it.
 */
static GMutex door;
static GRWLock library;

static void EnterAlone(void)
{
    g_mutex_lock(&door);
    g_rw_lock_writer_lock(&library);
    g_mutex_unlock(&door);
}

static void LeaveAlone(void)
{
    g_rw_lock_writer_unlock(&library);
}

static void Enter(void)
{
    g_mutex_lock(&door);
    g_rw_lock_reader_lock(&library);
    g_mutex_unlock(&door);
}

static void Leave(void)
{
    g_rw_lock_reader_unlock(&library);
}

static void DestroyHandle(SubtitleBurn *pSelf)
{
    EnterAlone();
    DestroyVideoSubtitle(pSelf->pHandle);
    LeaveAlone();
    pSelf->pHandle = NULL;
}

static gboolean MakeHandle(SubtitleBurn *pSelf, gint nWidth, gint nHeight)
{
    EnterAlone();
    /* Before the old one goes: with the last handle the library's Qt would go as well, only to come back. */
    void *pHandle = CreateVideoSubtitle(nWidth, nHeight);
    DestroyVideoSubtitle(pSelf->pHandle);
    LeaveAlone();
    pSelf->pHandle = pHandle;
    pSelf->nWidth = nWidth;
    pSelf->nHeight = nHeight;
    return pHandle != NULL;
}

/* The library counts a file that is missing as one without subtitles; whoever mistyped a name wants to hear of it. */
static gboolean IsReadable(const gchar *pFile)
{
    return g_file_test(pFile, G_FILE_TEST_IS_REGULAR) && g_access(pFile, R_OK) == 0;
}

static int Byte(guint nColor, int nPlace)
{
    return (int)(nColor >> 8 * nPlace & 0xFF);
}

static void SetFont(void *pHandle, const BurnSettings *pSettings)
{
    const gchar *pFamily = pSettings->pFamily ? pSettings->pFamily : "";
    /* Where the locale has no such characters, its encoding is most likely plain ASCII, for which the library takes
       UTF-8. */
    gchar *pLocal = g_locale_from_utf8(pFamily, -1, NULL, NULL, NULL);
    const int nStyle = (pSettings->bBold ? SUBTITLE_STYLE_BOLD : 0) | (pSettings->bItalic ? SUBTITLE_STYLE_ITALIC : 0);
    SetSubtitleFontParam(pHandle, pLocal ? pLocal : pFamily, pSettings->nPoints, nStyle);
    g_free(pLocal);
}

/* FALSE when the file was to be opened and is refused. */
static gboolean Apply(void *pHandle, const BurnSettings *pSettings, gboolean bOpen)
{
    const guint nChanged = pSettings->nChanged;
    Enter();
    if (nChanged & ChangedAlpha)
        SetSubtitleAlpah(pHandle, pSettings->nAlpha);
    if (nChanged & ChangedPos)
        SetSubtitlePos(pHandle, pSettings->nPos);
    if (nChanged & ChangedFont)
        SetFont(pHandle, pSettings);
    if (nChanged & ChangedFontColor)
        SetSubtitleFontColor(pHandle, Byte(pSettings->nFontColor, 2), Byte(pSettings->nFontColor, 1),
                             Byte(pSettings->nFontColor, 0));
    if (nChanged & ChangedOutlineColor)
        SetSubtitleOutlineColor(pHandle, Byte(pSettings->nOutlineColor, 2), Byte(pSettings->nOutlineColor, 1),
                                Byte(pSettings->nOutlineColor, 0));
    const gboolean bDone = !bOpen || SetSubtitleFile(pHandle, pSettings->pFile, pSettings->nTrack) == 0;
    Leave();
    return bDone;
}

/* Makes the handle ready for a frame of that size; FALSE, with the error told, when that cannot be. */
static gboolean Prepare(SubtitleBurn *pSelf, gint nWidth, gint nHeight)
{
    const gboolean bFirst = !pSelf->pHandle;
    const gboolean bNew = bFirst || nWidth != pSelf->nWidth || nHeight != pSelf->nHeight;
    GST_OBJECT_LOCK(pSelf);
    BurnSettings settings = BurnSettingsTake(&pSelf->settings, bNew);
    GST_OBJECT_UNLOCK(pSelf);

    const gboolean bFile = settings.nChanged & ChangedFile && BurnSettingsHasFile(&settings);
    const gboolean bMissing = bFile && !IsReadable(settings.pFile);
    /* The library might take the name for an address, and leaves the earlier file only for another. */
    if (bMissing)
        settings.nChanged = ChangedAll;
    gboolean bReady = TRUE;
    if (settings.nChanged & ChangedToDefault && !MakeHandle(pSelf, nWidth, nHeight)) {
        GST_ELEMENT_ERROR(pSelf, LIBRARY, INIT, ("No memory for subtitles."), (NULL));
        bReady = FALSE;
    } else if (settings.nChanged != 0 && (!Apply(pSelf->pHandle, &settings, bFile && !bMissing) || bMissing)) {
        if (bFirst) {
            DestroyHandle(pSelf);
            GST_ELEMENT_ERROR(pSelf, RESOURCE, READ, (RefusedFile, settings.pFile), (NULL));
            bReady = FALSE;
        } else {
            GST_ELEMENT_WARNING(pSelf, RESOURCE, READ, (RefusedFile, settings.pFile),
                                ("The film goes on without subtitles."));
        }
    }
    BurnSettingsClear(&settings);
    return bReady;
}

static gboolean Start(GstBaseTransform *pTransform)
{
    SubtitleBurn *pSelf = SUBTITLE_BURN(pTransform);
    GST_OBJECT_LOCK(pSelf);
    BurnSettings settings = BurnSettingsTake(&pSelf->settings, TRUE);
    GST_OBJECT_UNLOCK(pSelf);
    const gboolean bReady = !BurnSettingsHasFile(&settings) || IsReadable(settings.pFile);
    if (!bReady)
        GST_ELEMENT_ERROR(pSelf, RESOURCE, OPEN_READ, (RefusedFile, settings.pFile), (NULL));
    BurnSettingsClear(&settings);
    return bReady;
}

static gboolean Stop(GstBaseTransform *pTransform)
{
    DestroyHandle(SUBTITLE_BURN(pTransform));
    return TRUE;
}

/* Font and file are loaded with the caps, so that no frame waits for them. */
static gboolean SetInfo(GstVideoFilter *pFilter, GstCaps *pIn, GstVideoInfo *pInInfo, GstCaps *pOut,
                        GstVideoInfo *pOutInfo)
{
    (void)pIn;
    (void)pOut;
    (void)pOutInfo;
    return Prepare(SUBTITLE_BURN(pFilter), GST_VIDEO_INFO_WIDTH(pInInfo), GST_VIDEO_INFO_HEIGHT(pInInfo));
}

/* Milliseconds of the film at which a frame shows; -1 where it has no such time, or one before the film's start. */
static glong StreamTime(GstVideoFilter *pFilter, const GstVideoFrame *pFrame)
{
    const GstSegment *pSegment = &GST_BASE_TRANSFORM(pFilter)->segment;
    const GstClockTime nTime = GST_BUFFER_PTS(pFrame->buffer);
    guint64 nStream = 0;
    /* Not the simple function, which knows no time of a frame that begins before the segment and reaches into it. */
    if (!GST_CLOCK_TIME_IS_VALID(nTime) || pSegment->format != GST_FORMAT_TIME ||
        gst_segment_to_stream_time_full(pSegment, GST_FORMAT_TIME, nTime, &nStream) != 1)
        return -1;
    return (glong)MIN(gst_util_uint64_scale_round(nStream, 1, GST_MSECOND), (guint64)G_MAXLONG);
}

static GstFlowReturn TransformFrame(GstVideoFilter *pFilter, GstVideoFrame *pFrame)
{
    SubtitleBurn *pSelf = SUBTITLE_BURN(pFilter);
    /* The size is that of the caps, unless the frame says otherwise of itself. */
    if (!Prepare(pSelf, GST_VIDEO_FRAME_WIDTH(pFrame), GST_VIDEO_FRAME_HEIGHT(pFrame)))
        return GST_FLOW_ERROR;
    const glong nMilliseconds = StreamTime(pFilter, pFrame);
    if (nMilliseconds < 0)
        return GST_FLOW_OK;

    AVPicture picture = {{GST_VIDEO_FRAME_PLANE_DATA(pFrame, 0)}, {GST_VIDEO_FRAME_PLANE_STRIDE(pFrame, 0)}};
    Enter();
    const gboolean bDrawn =
        SetSubtitleTimeStamp(pSelf->pHandle, nMilliseconds) == 0 && ProcessSubtitleFrame(pSelf->pHandle, &picture) == 0;
    Leave();
    if (!bDrawn)
        GST_WARNING_OBJECT(pSelf, "no memory for the subtitle at %ld ms", nMilliseconds);
    return GST_FLOW_OK;
}

static void SetProperty(GObject *pObject, guint nProperty, const GValue *pValue, GParamSpec *pSpec)
{
    SubtitleBurn *pSelf = SUBTITLE_BURN(pObject);
    GST_OBJECT_LOCK(pSelf);
    BurnSettingsSet(&pSelf->settings, nProperty, pValue, pSpec);
    GST_OBJECT_UNLOCK(pSelf);
}

static void GetProperty(GObject *pObject, guint nProperty, GValue *pValue, GParamSpec *pSpec)
{
    SubtitleBurn *pSelf = SUBTITLE_BURN(pObject);
    GST_OBJECT_LOCK(pSelf);
    BurnSettingsGet(&pSelf->settings, nProperty, pValue, pSpec);
    GST_OBJECT_UNLOCK(pSelf);
}

static void Finalize(GObject *pObject)
{
    BurnSettingsClear(&SUBTITLE_BURN(pObject)->settings);
    G_OBJECT_CLASS(subtitle_burn_parent_class)->finalize(pObject);
}

static void subtitle_burn_init(SubtitleBurn *pSelf)
{
    BurnSettingsInit(&pSelf->settings);
}

static void subtitle_burn_class_init(SubtitleBurnClass *pClass)
{
    GObjectClass *pObject = G_OBJECT_CLASS(pClass);
    pObject->set_property = SetProperty;
    pObject->get_property = GetProperty;
    pObject->finalize = Finalize;
    BurnSettingsInstall(pObject);

    GstElementClass *pElement = GST_ELEMENT_CLASS(pClass);
    gst_element_class_set_static_metadata(pElement, "Subtitle burner", "Filter/Effect/Video",
                                          "Burns the subtitles of a file into video frames", "The libsubtitle authors");
    GstCaps *pCaps = gst_caps_from_string(GST_VIDEO_CAPS_MAKE("RGB"));
    gst_element_class_add_pad_template(pElement, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, pCaps));
    gst_element_class_add_pad_template(pElement, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, pCaps));
    gst_caps_unref(pCaps);

    GST_BASE_TRANSFORM_CLASS(pClass)->start = Start;
    GST_BASE_TRANSFORM_CLASS(pClass)->stop = Stop;
    GST_VIDEO_FILTER_CLASS(pClass)->set_info = SetInfo;
    GST_VIDEO_FILTER_CLASS(pClass)->transform_frame_ip = TransformFrame;
}

static gboolean InitPlugin(GstPlugin *pPlugin)
{
    return GST_ELEMENT_REGISTER(subtitleburn, pPlugin);
}

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, subtitleburn, "Burns subtitles into video frames", InitPlugin,
                  VERSION, "MIT/X11", PACKAGE, PACKAGE)
