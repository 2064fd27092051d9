// The installed headers as the oldest C++ that hosts may be written in.
#include "api/libsubtitle.h"
#include "vobsub/psstream.h"
#include "vobsub/subtitledecoder.h"

int CountOfWords();

int CountOfWords()
{
    const AVPicture picture = {{0}, {0}};
    const SubtitlePlanes planes = {{0}, {0}, 0, 0};
    return static_cast<int>((sizeof picture + sizeof planes + sizeof mediadata) / sizeof(int32_t));
}
