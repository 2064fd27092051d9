#include "subtitleburn.h"

#include "burnhandle.h"
#include "rawframe.h"

#include <glib/gstdio.h>
#include <unistd.h>

GST_DEBUG_CATEGORY_STATIC(subtitleburn_debug);
#define GST_CAT_DEFAULT subtitleburn_debug

struct _SubtitleBurn {
    GstVideoFilter parent;

    /* Under the object's lock, as properties may be set on any thread. */
    BurnSettings settings;

    /* Used by the streaming thread, and by the thread that stops the element once streaming has stopped. */
    BurnHandle handle;
    gint nFormat;      /* of the caps */
    gint nTagged;      /* GstVideoOrientationMethod of the latest tag */
    gint nOrientation; /* SUBTITLE_ORIENTATION_... of the current frame */
    gboolean bFile;    /* there is a file, and it could be opened so far as known */
    gboolean bDue;     /* in the current frame */
};

G_DEFINE_TYPE(SubtitleBurn, subtitle_burn, GST_TYPE_VIDEO_FILTER)
GST_ELEMENT_REGISTER_DEFINE_WITH_CODE(subtitleburn, "subtitleburn", GST_RANK_NONE, SUBTITLE_TYPE_BURN,
                                      GST_DEBUG_CATEGORY_INIT(subtitleburn_debug, "subtitleburn", 0,
                                                              "burns subtitles into frames"))

/* Checked here because the library accepts a missing file as an empty one, and might take its name for a URL. */
static gboolean IsReadable(const gchar *pFile)
{
    return g_file_test(pFile, G_FILE_TEST_IS_REGULAR) && g_access(pFile, R_OK) == 0;
}

/* Passes changed settings to the handle. FALSE without memory for a handle. */
static gboolean Apply(SubtitleBurn *pSelf, const BurnSettings *pSettings, gint nWidth, gint nHeight)
{
    const gboolean bChosen = pSettings->nChanged & ChangedFile && BurnSettingsHasFile(pSettings);
    const gboolean bOpen = bChosen && IsReadable(pSettings->pFile);
    if (pSettings->nChanged & ChangedFile)
        pSelf->bFile = bOpen;
    if (pSettings->nChanged & ChangedToDefault) {
        if (!pSelf->bFile)
            BurnHandleDestroy(&pSelf->handle);
        else if (!BurnHandleMake(&pSelf->handle, nWidth, nHeight))
            return FALSE;
    }
    if (pSelf->handle.pSubtitle && !BurnHandleApply(&pSelf->handle, pSettings, bOpen))
        pSelf->bFile = FALSE;
    if (bChosen && !pSelf->bFile)
        GST_ELEMENT_WARNING(
            pSelf, RESOURCE, READ,
            ("The subtitle file \"%s\" cannot be read or has no track %d.", pSettings->pFile, pSettings->nTrack),
            ("Frames pass without subtitles."));
    return TRUE;
}

/* Prepares the element for a frame of that size. FALSE, with an error on the bus, without memory. */
static gboolean Prepare(SubtitleBurn *pSelf, const GstVideoInfo *pInfo, gint nStoredWidth, gint nStoredHeight)
{
    BurnSettings settings = {.nChanged = 0};
    GST_OBJECT_LOCK(pSelf);
    const gint nMethod = pSelf->settings.nOrientation;
    pSelf->nOrientation = RawFrameOrientation(nMethod == GST_VIDEO_ORIENTATION_AUTO ? pSelf->nTagged : nMethod);
    const gboolean bTransposed = pSelf->nOrientation & SUBTITLE_ORIENTATION_TRANSPOSED;
    const gint nWidth = bTransposed ? nStoredHeight : nStoredWidth;
    const gint nHeight = bTransposed ? nStoredWidth : nStoredHeight;
    const gboolean bNew =
        !pSelf->handle.pSubtitle || nWidth != pSelf->handle.nWidth || nHeight != pSelf->handle.nHeight;
    /* Without a file, changes accumulate. */
    if (pSelf->bFile || pSelf->settings.nChanged & ChangedFile)
        settings = BurnSettingsTake(&pSelf->settings, bNew);
    GST_OBJECT_UNLOCK(pSelf);

    const gboolean bReady = settings.nChanged == 0 || Apply(pSelf, &settings, nWidth, nHeight);
    BurnSettingsClear(&settings);
    const gint nAcross = GST_VIDEO_INFO_PAR_N(pInfo);
    const gint nDown = GST_VIDEO_INFO_PAR_D(pInfo);
    BurnHandleSetPixelAspect(&pSelf->handle, bTransposed ? nDown : nAcross, bTransposed ? nAcross : nDown);
    if (!bReady)
        GST_ELEMENT_ERROR(pSelf, LIBRARY, INIT, ("No memory for subtitles."), (NULL));
    gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(pSelf), !pSelf->bFile);
    return bReady;
}

static gboolean Start(GstBaseTransform *pTransform)
{
    SubtitleBurn *pSelf = SUBTITLE_BURN(pTransform);
    pSelf->nTagged = GST_VIDEO_ORIENTATION_IDENTITY;
    GST_OBJECT_LOCK(pSelf);
    pSelf->settings.nChanged |= ChangedFile;
    GST_OBJECT_UNLOCK(pSelf);
    return TRUE;
}

static gboolean Stop(GstBaseTransform *pTransform)
{
    BurnHandleDestroy(&SUBTITLE_BURN(pTransform)->handle);
    return TRUE;
}

/* Loads font and file together with the caps, so that no frame waits for them. */
static gboolean SetInfo(GstVideoFilter *pFilter, GstCaps *pIn, GstVideoInfo *pInInfo, GstCaps *pOut,
                        GstVideoInfo *pOutInfo)
{
    (void)pIn;
    (void)pOut;
    (void)pOutInfo;
    SubtitleBurn *pSelf = SUBTITLE_BURN(pFilter);
    /* In the other modes a buffer does not have a whole frame but single fields. */
    if (GST_VIDEO_INFO_INTERLACE_MODE(pInInfo) > GST_VIDEO_INTERLACE_MODE_MIXED) {
        GST_ERROR_OBJECT(pSelf, "interlace-mode %s is not supported",
                         gst_video_interlace_mode_to_string(GST_VIDEO_INFO_INTERLACE_MODE(pInInfo)));
        return FALSE;
    }
    pSelf->nFormat = RawFrameFormat(GST_VIDEO_INFO_FORMAT(pInInfo));
    return Prepare(pSelf, pInInfo, GST_VIDEO_INFO_WIDTH(pInInfo), GST_VIDEO_INFO_HEIGHT(pInInfo));
}

static gboolean SinkEvent(GstBaseTransform *pTransform, GstEvent *pEvent)
{
    SubtitleBurn *pSelf = SUBTITLE_BURN(pTransform);
    GstVideoOrientationMethod method = GST_VIDEO_ORIENTATION_IDENTITY;
    GstTagList *pTags = NULL;
    if (GST_EVENT_TYPE(pEvent) == GST_EVENT_STREAM_START)
        pSelf->nTagged = GST_VIDEO_ORIENTATION_IDENTITY;
    if (GST_EVENT_TYPE(pEvent) == GST_EVENT_TAG) {
        gst_event_parse_tag(pEvent, &pTags);
        if (gst_video_orientation_from_tag(pTags, &method))
            pSelf->nTagged = method;
    }
    return GST_BASE_TRANSFORM_CLASS(subtitle_burn_parent_class)->sink_event(pTransform, pEvent);
}

/* The stream time of a frame in milliseconds; -1 if it has none, or one before the start of the film. */
static glong StreamTime(GstBaseTransform *pTransform, GstBuffer *pBuffer)
{
    const GstSegment *pSegment = &pTransform->segment;
    const GstClockTime nTime = GST_BUFFER_PTS(pBuffer);
    guint64 nStream = 0;
    /* gst_segment_to_stream_time() gives no time for a frame that begins before the segment and reaches into it. */
    if (!GST_CLOCK_TIME_IS_VALID(nTime) || pSegment->format != GST_FORMAT_TIME ||
        gst_segment_to_stream_time_full(pSegment, GST_FORMAT_TIME, nTime, &nStream) != 1)
        return -1;
    return (glong)MIN(gst_util_uint64_scale_round(nStream, 1, GST_MSECOND), (guint64)G_MAXLONG);
}

static gboolean IsDue(SubtitleBurn *pSelf, GstBuffer *pBuffer)
{
    const glong nMilliseconds = StreamTime(GST_BASE_TRANSFORM(pSelf), pBuffer);
    if (nMilliseconds < 0)
        return FALSE;
    const gint nDue = BurnHandleSeek(&pSelf->handle, nMilliseconds);
    if (nDue < 0)
        GST_WARNING_OBJECT(pSelf, "no memory for the subtitle at %ld ms", nMilliseconds);
    return nDue > 0;
}

/* A frame without a subtitle stays in its buffer, even in a shared one. To be drawn into, a shared buffer is copied. */
static GstFlowReturn PrepareOutput(GstBaseTransform *pTransform, GstBuffer *pInput, GstBuffer **ppOutput)
{
    SubtitleBurn *pSelf = SUBTITLE_BURN(pTransform);
    if (!GST_VIDEO_FILTER(pSelf)->negotiated)
        return GST_FLOW_NOT_NEGOTIATED;
    const GstVideoInfo *pInfo = &GST_VIDEO_FILTER(pSelf)->in_info;
    const GstVideoRectangle area = RawFrameArea(pInput, pInfo);
    if (!Prepare(pSelf, pInfo, area.w, area.h))
        return GST_FLOW_ERROR;
    pSelf->bDue = pSelf->bFile && IsDue(pSelf, pInput);
    if (pSelf->bDue)
        return GST_BASE_TRANSFORM_CLASS(subtitle_burn_parent_class)
            ->prepare_output_buffer(pTransform, pInput, ppOutput);
    *ppOutput = pInput;
    return GST_FLOW_OK;
}

static GstFlowReturn Transform(GstBaseTransform *pTransform, GstBuffer *pBuffer)
{
    SubtitleBurn *pSelf = SUBTITLE_BURN(pTransform);
    if (!pSelf->bDue)
        return GST_FLOW_OK;
    GstVideoFrame video;
    const GstMapFlags flags = (GstMapFlags)(GST_MAP_READWRITE | (guint)GST_VIDEO_FRAME_MAP_FLAG_NO_REF);
    if (!gst_video_frame_map(&video, &GST_VIDEO_FILTER(pSelf)->in_info, pBuffer, flags)) {
        GST_ELEMENT_WARNING(pSelf, STREAM, FORMAT, ("A video frame is not as its format says."), (NULL));
        return GST_FLOW_OK;
    }
    const SubtitleFrame frame = RawFrameDescribe(&video, pSelf->nFormat, pSelf->nOrientation);
    if (!BurnHandleDraw(&pSelf->handle, &frame))
        GST_WARNING_OBJECT(pSelf, "no memory for a subtitle, or no colours of such a frame");
    gst_video_frame_unmap(&video);
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
    GstCaps *pCaps = RawFrameCaps();
    gst_element_class_add_pad_template(pElement, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, pCaps));
    gst_element_class_add_pad_template(pElement, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, pCaps));
    gst_caps_unref(pCaps);

    GstBaseTransformClass *pTransform = GST_BASE_TRANSFORM_CLASS(pClass);
    pTransform->start = Start;
    pTransform->stop = Stop;
    pTransform->sink_event = SinkEvent;
    pTransform->prepare_output_buffer = PrepareOutput;
    pTransform->transform_ip = Transform;
    pTransform->transform_ip_on_passthrough = FALSE;
    GST_VIDEO_FILTER_CLASS(pClass)->set_info = SetInfo;
}

static gboolean InitPlugin(GstPlugin *pPlugin)
{
    return GST_ELEMENT_REGISTER(subtitleburn, pPlugin);
}

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, subtitleburn, "Burns subtitles into video frames", InitPlugin,
                  VERSION, "MIT/X11", PACKAGE, PACKAGE)
