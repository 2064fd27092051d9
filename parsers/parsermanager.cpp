#include "parsers/parsermanager.h"

#include "parsers/assparser.h"
#include "parsers/ffparser.h"
#include "parsers/srtparser.h"
#include "vobsub/subparser.h"

namespace
{

/** What follows the path's last '.', folder names included, in lower case; empty if the path starts with it. */
QString Extension(const QString &path)
{
    const int dot = path.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? path.mid(dot + 1).toLower() : QString();
}

/** A new parser for files with this extension. The caller deletes it. */
IParser *CreateParser(const QString &extension)
{
    if (extension == QLatin1String("srt"))
        return new SrtParser;
    if (extension == QLatin1String("ass") || extension == QLatin1String("ssa"))
        return new AssParser;
    if (extension == QLatin1String("idx"))
        return new SubParser;
    return new FFParser;
}

} // namespace

ParserManager::ParserManager() = default;

ParserManager::~ParserManager()
{
    delete m_pParser;
}

int ParserManager::Open(const QString &path, int track)
{
    delete m_pParser;
    m_pParser = nullptr;
    if (path.isEmpty())
        return 0;
    m_pParser = CreateParser(Extension(path));
    return m_pParser->Open(path, track);
}

bool ParserManager::HasTrack()
{
    return m_pParser && m_pParser->HasTrack();
}

QString ParserManager::GetSubtitle(long ms)
{
    return m_pParser ? m_pParser->GetSubtitle(ms) : QString();
}

bool ParserManager::IsTextSub()
{
    return m_pParser ? m_pParser->IsTextSub() : true;
}

void ParserManager::SetVideoSize(int w, int h)
{
    if (m_pParser)
        m_pParser->SetVideoSize(w, h);
}

QImage ParserManager::TextToImage(const QString &key, QRect &rect)
{
    return m_pParser ? m_pParser->TextToImage(key, rect) : QImage();
}

RowRange ParserManager::VisibleRows()
{
    return m_pParser ? m_pParser->VisibleRows() : RowRange::All();
}

QStringList ParserManager::AllDueTexts(long ms)
{
    return m_pParser ? m_pParser->AllDueTexts(ms) : QStringList();
}

ColorPicture ParserManager::ToColorPicture(const QString &key)
{
    return m_pParser ? m_pParser->ToColorPicture(key) : ColorPicture();
}

QString ParserManager::AllDuePictures(long ms)
{
    return m_pParser ? m_pParser->AllDuePictures(ms) : QString();
}
