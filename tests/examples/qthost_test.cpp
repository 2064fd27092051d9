// The player as a separate program, and its window when keys are pressed.
int RunPlayer(int argc, char **argv);
#define main RunPlayer
#include "examples/qthost.cpp" // NOLINT(bugprone-suspicious-include)
#undef main

#include "examplestest.h"

namespace
{

const char *const Family = "DejaVu Sans";

std::string Bytes(const QImage &frame)
{
    std::string strBytes;
    for (int y = 0; y < frame.height(); ++y)
        strBytes.append(reinterpret_cast<const char *>(frame.constScanLine(y)), std::size_t{3} * frame.width());
    return strBytes;
}

/** Calls the library directly, on frames without padding between rows. */
class Direct
{
public:
    explicit Direct(const std::string &strSubtitles) : m_pSubtitle(CreateVideoSubtitle(426, 240))
    {
        EXPECT_EQ(SetSubtitleFontParam(m_pSubtitle, Family, 14, 0), 0);
        EXPECT_EQ(SetSubtitleFile(m_pSubtitle, strSubtitles.c_str(), 0), 0);
    }
    ~Direct() { DestroyVideoSubtitle(m_pSubtitle); }
    Direct(const Direct &) = delete;
    Direct &operator=(const Direct &) = delete;

    void *Handle() const { return m_pSubtitle; }

    std::string FrameAt(qint64 nMilliseconds) const
    {
        std::string strFrame = Bytes(FilmFrame(nMilliseconds));
        AVPicture picture = {{reinterpret_cast<std::uint8_t *>(strFrame.data())}, {3 * 426}};
        EXPECT_EQ(SetSubtitleTimeStamp(m_pSubtitle, static_cast<long>(nMilliseconds)), 0);
        EXPECT_EQ(ProcessSubtitleFrame(m_pSubtitle, &picture), 0);
        return strFrame;
    }

private:
    void *m_pSubtitle;
};

class QtHostTest : public testing::Test
{
protected:
    Outcome Run(const std::vector<std::string> &listArguments) const
    {
        std::vector<std::string> listCommand = {QTHOST};
        listCommand.insert(listCommand.end(), listArguments.begin(), listArguments.end());
        return ChildProcess::Run(listCommand);
    }
    std::string File(const std::string &strName) const { return (m_folder.Path() / strName).string(); }

    TemporaryFolder m_folder;
    const std::string m_strFirst = m_folder.Write("first.srt", "00:00:00,400 --> 00:00:00,800\nHello\n\n"
                                                               "00:00:04,000 --> 00:00:06,000\nLater\n\n");
    const std::string m_strSecond = m_folder.Write("second.srt", "00:00:04,000 --> 00:00:06,000\nAnother\n\n");
};

class PlayerTest : public QtHostTest
{
protected:
    PlayerTest() { EXPECT_TRUE(m_player.OpenFile(0)); }

    void Press(Qt::Key key)
    {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(&m_player, &event);
    }
    std::string Shown() { return Bytes(m_player.FrameAt(m_player.Clock().Position())); }

    Player m_player{{QString::fromStdString(m_strFirst), QString::fromStdString(m_strSecond)}, Family};
    Direct m_direct{m_strFirst};
};

} // namespace

TEST_F(QtHostTest, DumpsFramesAndEnds)
{
    const Outcome outcome = Run({"--font", Family, "--frames", "30", "--dump", File("film.rgb"), m_strFirst});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "");
    std::ifstream stream(File("film.rgb"), std::ios::binary);
    const std::string strFilm{std::istreambuf_iterator<char>(stream), {}};
    const std::size_t nBytes = 426 * 240 * 3;
    ASSERT_EQ(strFilm.size(), 30 * nBytes);
    const Direct direct(m_strFirst);
    for (int n = 0; n < 30; ++n) {
        const std::string strFrame = strFilm.substr(n * nBytes, nBytes);
        EXPECT_TRUE(strFrame == direct.FrameAt(n * 40)) << n;
        EXPECT_EQ(strFrame == Bytes(FilmFrame(n * 40)), n < 10 || n > 20) << n;
    }
}

TEST_F(QtHostTest, SaysWhatIsWrong)
{
    EXPECT_EQ(Run({}).nExit, 1);
    const Outcome missing = Run({File("none.srt")});
    EXPECT_EQ(missing.nExit, 1);
    EXPECT_EQ(missing.strError, "qthost: " + File("none.srt") + ": cannot be read\n");
    const Outcome folder = Run({"--frames", "1", "--dump", File("none/film.rgb"), m_strFirst});
    EXPECT_EQ(folder.nExit, 1);
    EXPECT_EQ(folder.strError, "qthost: " + File("none/film.rgb") + ": No such file or directory\n");
    const Outcome full = Run({"--frames", "1", "--dump", "/dev/full", m_strFirst});
    EXPECT_EQ(full.nExit, 1);
}

TEST_F(PlayerTest, PausesAndSeeks)
{
    Press(Qt::Key_Space);
    EXPECT_TRUE(m_player.Clock().IsPaused());
    Press(Qt::Key_Home);
    EXPECT_EQ(m_player.Clock().Position(), 0);
    EXPECT_TRUE(Shown() == Bytes(FilmFrame(0)));
    Press(Qt::Key_Right);
    EXPECT_EQ(m_player.Clock().Position(), 5000);
    EXPECT_TRUE(Shown() == m_direct.FrameAt(5000));
    EXPECT_FALSE(Shown() == Bytes(FilmFrame(5000)));
    Press(Qt::Key_Right);
    EXPECT_TRUE(Shown() == Bytes(FilmFrame(10000)));
    Press(Qt::Key_Left);
    EXPECT_TRUE(Shown() == m_direct.FrameAt(5000));
    Press(Qt::Key_Left);
    Press(Qt::Key_Left);
    EXPECT_EQ(m_player.Clock().Position(), 0);
    Press(Qt::Key_Space);
    EXPECT_FALSE(m_player.Clock().IsPaused());
}

TEST_F(PlayerTest, ChangesTheSubtitleWhilePlaying)
{
    Press(Qt::Key_Space);
    Press(Qt::Key_Home);
    Press(Qt::Key_Right);
    Press(Qt::Key_Up);
    EXPECT_EQ(SetSubtitlePos(m_direct.Handle(), 80), 0);
    EXPECT_TRUE(Shown() == m_direct.FrameAt(5000));
    Press(Qt::Key_Plus);
    EXPECT_FALSE(Shown() == m_direct.FrameAt(5000));
    SetSubtitleFontParam(m_direct.Handle(), Family, 16, 0);
    EXPECT_TRUE(Shown() == m_direct.FrameAt(5000));
    Press(Qt::Key_N);
    EXPECT_FALSE(Shown() == m_direct.FrameAt(5000));
    EXPECT_EQ(SetSubtitleFile(m_direct.Handle(), m_strSecond.c_str(), 0), 0);
    EXPECT_TRUE(Shown() == m_direct.FrameAt(5000));
    Press(Qt::Key_N);
    Press(Qt::Key_Minus);
    Press(Qt::Key_Down);
    const Direct asAtFirst(m_strFirst);
    EXPECT_TRUE(Shown() == asAtFirst.FrameAt(5000));
}

int main(int argc, char **argv)
{
    const TemporaryFolder runtimeFolder;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Without a runtime folder, QGuiApplication prints a warning.
    qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(runtimeFolder.Path().string()));
    testing::InitGoogleTest(&argc, argv);
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
