#include "parsers/iparser.h"

IParser::~IParser() = default;

bool IParser::IsTextSub()
{
    return true;
}

void IParser::SetVideoSize(int /*width*/, int /*height*/) {}

bool IParser::HasTrack()
{
    return true;
}

QImage IParser::TextToImage(const QString & /*key*/, QRect & /*rect*/)
{
    return {};
}

RowRange IParser::VisibleRows()
{
    return RowRange::All();
}

QStringList IParser::AllDueTexts(long /*ms*/)
{
    return {};
}

ColorPicture IParser::ToColorPicture(const QString & /*key*/)
{
    return {};
}

QString IParser::AllDuePictures(long /*ms*/)
{
    return {};
}
