/*
 * A Qt player: a window that shows a moving gradient instead of a film, with subtitles.
 *
 *     qthost [OPTION...] SUBTITLES...
 *
 * Space pauses, Left and Right seek by five seconds, Home seeks to the start, Up and Down move the subtitles, Plus and
 * Minus change their size, N opens the next file, Escape quits. Build it with the Qt that the library was built with,
 * Qt5Gui or Qt6Gui:
 *
 *     c++ -std=c++17 -fPIC -o qthost qthost.cpp $(pkg-config --cflags --libs libsubtitle Qt5Gui)
 */
#include <libsubtitle.h>

#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QKeyEvent>
#include <QPainter>
#include <QRasterWindow>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace
{

const QSize FilmSize(426, 240);
const int FrameMilliseconds = 40;

/** The position in the film, which runs until it is paused. */
class FilmClock
{
public:
    FilmClock() { m_timer.start(); }

    qint64 Position() const { return m_nBase + (m_bPaused ? 0 : m_timer.elapsed()); }
    void SetPaused(bool bPaused)
    {
        Seek(Position());
        m_bPaused = bPaused;
    }
    bool IsPaused() const { return m_bPaused; }
    void Seek(qint64 nMilliseconds)
    {
        m_nBase = std::max<qint64>(0, nMilliseconds);
        m_timer.start();
    }

private:
    QElapsedTimer m_timer;
    qint64 m_nBase = 0;
    bool m_bPaused = false;
};

/** A frame of the film, as a decoder might return it. Rows of a QImage are padded to multiples of four bytes. */
QImage FilmFrame(qint64 nMilliseconds)
{
    QImage frame(FilmSize, QImage::Format_RGB888);
    for (int y = 0; y < frame.height(); ++y) {
        uchar *pPixel = frame.scanLine(y);
        for (int x = 0; x < frame.width(); ++x, pPixel += 3) {
            pPixel[0] = static_cast<uchar>(40 + (x + nMilliseconds / FrameMilliseconds) % 100);
            pPixel[1] = static_cast<uchar>(40 + y / 2);
            pPixel[2] = 120;
        }
    }
    return frame;
}

class Player : public QRasterWindow
{
public:
    Player(const QStringList &listFiles, const QByteArray &strFont);
    ~Player() override { DestroyVideoSubtitle(m_pSubtitle); }

    FilmClock &Clock() { return m_clock; }
    bool OpenFile(int nFile);
    QImage FrameAt(qint64 nMilliseconds);
    void Dump(QFile *pFile, int nFrames);

protected:
    void paintEvent(QPaintEvent *pEvent) override;
    void keyPressEvent(QKeyEvent *pEvent) override;

private:
    void DumpFrame(const QImage &frame);

    QStringList m_listFiles;
    QByteArray m_strFont;
    int m_nFile = 0;
    int m_nPoints = 14;
    int m_nPercent = 85;
    void *m_pSubtitle = CreateVideoSubtitle(FilmSize.width(), FilmSize.height());
    FilmClock m_clock;
    QTimer m_repaint;
    QFile *m_pDump = nullptr;
    int m_nFramesToDump = 0;
};

Player::Player(const QStringList &listFiles, const QByteArray &strFont) : m_listFiles(listFiles), m_strFont(strFont)
{
    SetSubtitleFontParam(m_pSubtitle, m_strFont.constData(), m_nPoints, 0);
    resize(FilmSize * 2);
    QObject::connect(&m_repaint, &QTimer::timeout, this, [this] { update(); });
    m_repaint.start(FrameMilliseconds);
}

bool Player::OpenFile(int nFile)
{
    m_nFile = nFile % m_listFiles.size();
    const QString &strFile = m_listFiles[m_nFile];
    // Checked here because the library accepts a missing file as one without subtitles.
    const QByteArray strName = QFile::encodeName(strFile);
    const bool bOpen = QFileInfo(strFile).isReadable() && SetSubtitleFile(m_pSubtitle, strName.constData(), 0) == 0;
    setTitle(bOpen ? strFile : strFile + QStringLiteral(": cannot be read"));
    return bOpen;
}

/** The film's frame at a time, with the subtitle due then. */
QImage Player::FrameAt(qint64 nMilliseconds)
{
    QImage frame = FilmFrame(nMilliseconds);
    AVPicture picture = {{frame.bits()}, {static_cast<int>(frame.bytesPerLine())}};
    SetSubtitleTimeStamp(m_pSubtitle, static_cast<long>(nMilliseconds));
    ProcessSubtitleFrame(m_pSubtitle, &picture); // without memory the frame shows without subtitles
    return frame;
}

void Player::paintEvent(QPaintEvent *)
{
    const QImage frame = FrameAt(m_clock.Position());
    QPainter painter(this);
    painter.drawImage(QRect(QPoint(), size()), frame);
    if (m_pDump)
        DumpFrame(frame);
}

void Player::keyPressEvent(QKeyEvent *pEvent)
{
    switch (pEvent->key()) {
    case Qt::Key_Space:
        m_clock.SetPaused(!m_clock.IsPaused());
        break;
    case Qt::Key_Home:
        m_clock.Seek(0);
        break;
    case Qt::Key_Left:
    case Qt::Key_Right:
        m_clock.Seek(m_clock.Position() + (pEvent->key() == Qt::Key_Left ? -5000 : 5000));
        break;
    case Qt::Key_Up:
    case Qt::Key_Down:
        m_nPercent = std::clamp(m_nPercent + (pEvent->key() == Qt::Key_Up ? -5 : 5), 0, 100);
        SetSubtitlePos(m_pSubtitle, m_nPercent);
        break;
    case Qt::Key_Plus:
    case Qt::Key_Minus:
        m_nPoints = std::max(6, m_nPoints + (pEvent->key() == Qt::Key_Plus ? 2 : -2));
        SetSubtitleFontParam(m_pSubtitle, m_strFont.constData(), m_nPoints, 0);
        break;
    case Qt::Key_N:
        OpenFile(m_nFile + 1);
        break;
    case Qt::Key_Escape:
        close();
        break;
    default:
        QRasterWindow::keyPressEvent(pEvent);
        return;
    }
    update();
}

/** Shows all frames without regard to real time, writes each to a file, and ends the program after the last. */
void Player::Dump(QFile *pFile, int nFrames)
{
    m_pDump = pFile;
    m_nFramesToDump = nFrames;
    m_clock.SetPaused(true);
    m_clock.Seek(0);
}

void Player::DumpFrame(const QImage &frame)
{
    bool bWritten = true;
    const int nBytes = 3 * frame.width();
    for (int y = 0; y < frame.height(); ++y)
        bWritten &= m_pDump->write(reinterpret_cast<const char *>(frame.constScanLine(y)), nBytes) == nBytes;
    m_clock.Seek(m_clock.Position() + FrameMilliseconds);
    --m_nFramesToDump;
    if (m_nFramesToDump == 0 || !bWritten) {
        bWritten &= m_pDump->flush();
        m_pDump = nullptr;
        QCoreApplication::exit(bWritten ? EXIT_SUCCESS : EXIT_FAILURE);
    }
}

int Fail(const QString &strMessage)
{
    (void)std::fprintf(stderr, "qthost: %s\n", qPrintable(strMessage));
    return EXIT_FAILURE;
}

} // namespace

int main(int argc, char **argv)
{
    // Created before the first handle and destroyed after the last one.
    const QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({{QStringLiteral("font"), QStringLiteral("Family of the text."), QStringLiteral("family")},
                       {QStringLiteral("frames"), QStringLiteral("End after so many frames."), QStringLiteral("n")},
                       {QStringLiteral("dump"), QStringLiteral("Write them there."), QStringLiteral("file")}});
    parser.addPositionalArgument(QStringLiteral("SUBTITLES"), QStringLiteral("Subtitle files."));
    parser.process(application);
    if (parser.positionalArguments().isEmpty())
        parser.showHelp(EXIT_FAILURE);

    Player player(parser.positionalArguments(), parser.value(QStringLiteral("font")).toLocal8Bit());
    if (!player.OpenFile(0))
        return Fail(player.title());
    QFile dump(parser.value(QStringLiteral("dump")));
    if (parser.isSet(QStringLiteral("dump"))) {
        if (!dump.open(QIODevice::WriteOnly))
            return Fail(dump.fileName() + QStringLiteral(": ") + dump.errorString());
        player.Dump(&dump, std::max(1, parser.value(QStringLiteral("frames")).toInt()));
    }
    player.show();
    return QGuiApplication::exec();
}
