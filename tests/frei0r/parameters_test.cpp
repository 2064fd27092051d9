// The parameters of the plugin: their defaults, and that each has the effect of a setter of the library.
#include "directburn.h"
#include "frei0rtest.h"

#include "support/childprocess.h"

namespace
{

class ParametersTest : public Frei0rTest
{
protected:
    using Change = std::function<void(const Instance &)>;

    std::string Burnt(const Calls &calls) const
    {
        return DirectBurn(m_strFrame, Width, Height, 500, m_strSubtitles, calls);
    }

    /** Expects the effect of the library calls from a parameter set before the first frame, and from one set after. */
    void ExpectLike(const char *pWhat, const Change &change, const Calls &calls) const
    {
        const std::string strExpected = Burnt(calls);
        EXPECT_TRUE(strExpected != Burnt({})) << pWhat;
        const Instance before(m_plugin, Width, Height);
        change(before);
        before.SetText("location", m_strSubtitles);
        EXPECT_TRUE(before.Update(m_strFrame, 0.5) == strExpected) << pWhat;
        const Instance after(m_plugin, Width, Height);
        after.SetText("location", m_strSubtitles);
        EXPECT_TRUE(after.Update(m_strFrame, 0.5) == Burnt({})) << pWhat;
        change(after);
        EXPECT_TRUE(after.Update(m_strFrame, 0.5) == strExpected) << pWhat;
    }

    const std::string m_strFrame = Frame();
};

} // namespace

TEST_F(ParametersTest, AreListed)
{
    const struct {
        const char *pName;
        int nType;
    } listExpected[] = {
        {"location", F0R_PARAM_STRING},  {"milliseconds", F0R_PARAM_BOOL},   {"subtitle-track", F0R_PARAM_STRING},
        {"alpha", F0R_PARAM_DOUBLE},     {"pos", F0R_PARAM_DOUBLE},          {"font-family", F0R_PARAM_STRING},
        {"font-size", F0R_PARAM_DOUBLE}, {"bold", F0R_PARAM_BOOL},           {"italic", F0R_PARAM_BOOL},
        {"font-color", F0R_PARAM_COLOR}, {"outline-color", F0R_PARAM_COLOR}, {"offset", F0R_PARAM_STRING},
        {"natural", F0R_PARAM_BOOL}};
    f0r_param_info_t info = {};
    int n = 0;
    for (const auto &expected : listExpected) {
        PLUGIN_CALL(m_plugin, f0r_get_param_info)(&info, n++);
        EXPECT_STREQ(info.name, expected.pName);
        EXPECT_EQ(info.type, expected.nType) << expected.pName;
        EXPECT_GT(std::string(info.explanation).size(), 5U);
    }
    for (const int nOutside : {n, -1, 1000}) {
        PLUGIN_CALL(m_plugin, f0r_get_param_info)(&info, nOutside);
        EXPECT_EQ(info.name, nullptr);
    }
}

TEST_F(ParametersTest, HaveDefaults)
{
    const Instance instance(m_plugin, Width, Height);
    EXPECT_EQ(instance.Text("location"), "");
    EXPECT_EQ(instance.Number("milliseconds"), 0);
    EXPECT_EQ(instance.Text("subtitle-track"), "0");
    EXPECT_EQ(instance.Number("alpha"), 1);
    EXPECT_EQ(instance.Number("pos"), 0.85);
    EXPECT_EQ(instance.Text("font-family"), "");
    EXPECT_EQ(instance.Number("font-size"), 0);
    EXPECT_EQ(instance.Number("bold"), 0);
    EXPECT_EQ(instance.Number("italic"), 0);
    const f0r_param_color_t font = instance.Color("font-color");
    EXPECT_EQ(std::tie(font.r, font.g, font.b), std::make_tuple(1.0F, 1.0F, 1.0F));
    const f0r_param_color_t outline = instance.Color("outline-color");
    EXPECT_EQ(std::tie(outline.r, outline.g, outline.b), std::make_tuple(10 / 255.0F, 10 / 255.0F, 10 / 255.0F));
    EXPECT_EQ(instance.Text("offset"), "0");
    EXPECT_EQ(instance.Number("natural"), 0);
}

TEST_F(ParametersTest, AreKeptAsTheyWereSet)
{
    const Instance instance(m_plugin, Width, Height);
    for (const char *pName : {"location", "subtitle-track", "font-family", "offset"}) {
        instance.SetText(pName, std::string("a longer text for ") + pName);
        EXPECT_EQ(instance.Text(pName), std::string("a longer text for ") + pName);
    }
    for (const char *pName : {"alpha", "pos", "font-size"}) {
        instance.SetNumber(pName, 0.3);
        EXPECT_EQ(instance.Number(pName), 0.3);
    }
    for (const char *pName : {"milliseconds", "bold", "italic", "natural"}) {
        instance.SetNumber(pName, 0.5);
        EXPECT_EQ(instance.Number(pName), 1);
        instance.SetNumber(pName, 0.49);
        EXPECT_EQ(instance.Number(pName), 0);
    }
    for (const char *pName : {"font-color", "outline-color"}) {
        instance.SetColor(pName, 0.1F, 0.2F, 0.3F);
        const f0r_param_color_t color = instance.Color(pName);
        EXPECT_EQ(std::tie(color.r, color.g, color.b), std::make_tuple(0.1F, 0.2F, 0.3F));
    }
    double fUntouched = 7;
    for (const int nOutside : {13, -1, 1000}) {
        instance.Set(nOutside, &fUntouched);
        instance.Get(nOutside, &fUntouched);
        EXPECT_EQ(fUntouched, 7);
    }
}

TEST_F(ParametersTest, DoWhatTheSettersDo)
{
    ExpectLike(
        "alpha", [](const Instance &instance) { instance.SetNumber("alpha", 0.5); },
        [](void *p) { SetSubtitleAlpah(p, 128); });
    ExpectLike(
        "alpha 0", [](const Instance &instance) { instance.SetNumber("alpha", 0); },
        [](void *p) { SetSubtitleAlpah(p, 0); });
    ExpectLike(
        "pos", [](const Instance &instance) { instance.SetNumber("pos", 0.2); },
        [](void *p) { SetSubtitlePos(p, 20); });
    ExpectLike(
        "family", [](const Instance &instance) { instance.SetText("font-family", "DejaVu Serif"); },
        [](void *p) { SetSubtitleFontParam(p, "DejaVu Serif", 0, 0); });
    ExpectLike(
        "size", [](const Instance &instance) { instance.SetNumber("font-size", 0.2); },
        [](void *p) { SetSubtitleFontParam(p, "", 28, 0); }); // 36.8 pixels, 27.6 points
    ExpectLike(
        "bold", [](const Instance &instance) { instance.SetNumber("bold", 1); },
        [](void *p) { SetSubtitleFontParam(p, "", 0, SUBTITLE_STYLE_BOLD); });
    ExpectLike(
        "italic", [](const Instance &instance) { instance.SetNumber("italic", 1); },
        [](void *p) { SetSubtitleFontParam(p, "", 0, SUBTITLE_STYLE_ITALIC); });
    ExpectLike(
        "font colour", [](const Instance &instance) { instance.SetColor("font-color", 0.125F, 0.5F, 0.945F); },
        [](void *p) { SetSubtitleFontColor(p, 32, 128, 241); });
    ExpectLike(
        "outline", [](const Instance &instance) { instance.SetColor("outline-color", 0.125F, 0.5F, 0.945F); },
        [](void *p) { SetSubtitleOutlineColor(p, 32, 128, 241); });
    ExpectLike(
        "all",
        [](const Instance &instance) {
            instance.SetNumber("alpha", 0.8);
            instance.SetNumber("pos", 0.5);
            instance.SetText("font-family", "DejaVu Sans Mono");
            instance.SetNumber("font-size", 0.1);
            instance.SetNumber("bold", 1);
            instance.SetNumber("italic", 1);
            instance.SetColor("font-color", 1, 0, 0);
            instance.SetColor("outline-color", 0, 0, 1);
        },
        [](void *p) {
            SetSubtitleAlpah(p, 204);
            SetSubtitlePos(p, 50);
            SetSubtitleFontParam(p, "DejaVu Sans Mono", 14, 3);
            SetSubtitleFontColor(p, 255, 0, 0);
            SetSubtitleOutlineColor(p, 0, 0, 255);
        });
}

TEST_F(ParametersTest, ValuesOutsideOfTheirRangesAreLimited)
{
    ExpectLike(
        "below",
        [](const Instance &instance) {
            instance.SetNumber("pos", -3);
            instance.SetColor("font-color", -1, 0.5F, 9);
            instance.SetNumber("font-size", 1e-9);
        },
        [](void *p) {
            SetSubtitlePos(p, 0);
            SetSubtitleFontColor(p, 0, 128, 255);
            SetSubtitleFontParam(p, "", 1, 0);
        });
    ExpectLike(
        "above", [](const Instance &instance) { instance.SetNumber("pos", 1e300); },
        [](void *p) { SetSubtitlePos(p, 100); });
    const Instance instance(m_plugin, Width, Height);
    instance.SetText("location", m_strSubtitles);
    instance.SetNumber("font-size", 1e300);
    EXPECT_TRUE(instance.Update(m_strFrame, 0.5) == Burnt([](void *p) { SetSubtitleFontParam(p, "", 4096, 0); }));
}

TEST_F(ParametersTest, ReturnToTheirDefaults)
{
    const Instance instance(m_plugin, Width, Height);
    instance.SetText("location", m_strSubtitles);
    instance.SetNumber("font-size", 0.2);
    instance.SetText("font-family", "DejaVu Serif");
    instance.SetNumber("alpha", 0.5);
    instance.SetNumber("pos", 0.4);
    EXPECT_TRUE(instance.Update(m_strFrame, 0.5) != Burnt({}));
    instance.SetNumber("font-size", 0);
    instance.SetText("font-family", "");
    instance.SetNumber("alpha", 1);
    instance.SetNumber("pos", 0.85);
    EXPECT_TRUE(instance.Update(m_strFrame, 0.5) == Burnt({}));
}

TEST_F(ParametersTest, TrackIsTheOneOfAContainer)
{
    for (const char *pName : {"one", "two"})
        m_folder.Write(std::string(pName) + ".srt", "1\n00:00:00,400 --> 00:00:00,800\n" + std::string(pName) + "\n\n");
    const Outcome outcome = ChildProcess::Run({"ffmpeg", "-nostdin", "-v", "error", "-i", File("one.srt"), "-i",
                                               File("two.srt"), "-map", "0", "-map", "1", "-c", "copy", File("a.mkv")});
    ASSERT_EQ(outcome.nExit, 0) << outcome.strError;
    const auto fromTrack = [&](int nTrack) {
        return DirectBurn(m_strFrame, Width, Height, 500, File("a.mkv"), {}, nTrack);
    };
    ASSERT_TRUE(fromTrack(0) != fromTrack(1));
    const Instance instance(m_plugin, Width, Height);
    instance.SetText("location", File("a.mkv"));
    EXPECT_TRUE(instance.Update(m_strFrame, 0.5) == fromTrack(0));
    instance.SetText("subtitle-track", "1");
    EXPECT_TRUE(instance.Update(m_strFrame, 0.5) == fromTrack(1));
    for (const char *pTrack : {"-1", "one", "1.5", "", " 1", "99999999999"}) {
        instance.SetText("subtitle-track", pTrack);
        EXPECT_TRUE(instance.Update(m_strFrame, 0.5) == m_strFrame) << pTrack;
    }
    instance.SetText("subtitle-track", "0");
    EXPECT_TRUE(instance.Update(m_strFrame, 0.5) == fromTrack(0));
}
