// Variables, functions and a class that have the names of exported ones but nothing to do with the library. They are
// linked into hosts, and into a library for LD_PRELOAD.
#include <algorithm>
#include <iterator>

namespace
{
int calls;
}

class VideoSubtitle
{
public:
    virtual void Count();
    virtual ~VideoSubtitle();
    static long ms_nInstanceCount[4];
};

void VideoSubtitle::Count()
{
    ++calls;
}

VideoSubtitle::~VideoSubtitle()
{
    ++calls;
}

long VideoSubtitle::ms_nInstanceCount[4] = {77, 77, 77, 77};

extern "C" {
unsigned char mediadata[1000];
long Coded_Picture_Width = 77;
long Coded_Picture_Height = 77;
long Chroma_Width = 77;
long Chroma_Height = 77;
long chroma_format = 77;
long Subt_Color = 77;
long Subt_Offset = 77;
int subtitle_init();
void Rle_Output();
bool OwnNamesAreUntouched();

int subtitle_init()
{
    return ++calls;
}
void Rle_Output()
{
    ++calls;
}

bool OwnNamesAreUntouched()
{
    const auto isSet = [](long value) { return value == 77; };
    const auto isZero = [](unsigned char byte) { return byte == 0; };
    const long all[] = {Coded_Picture_Width, Coded_Picture_Height, Chroma_Width, Chroma_Height,
                        chroma_format,       Subt_Color,           Subt_Offset};
    return calls == 0 && std::all_of(std::begin(all), std::end(all), isSet) &&
           std::all_of(std::begin(mediadata), std::end(mediadata), isZero) &&
           std::all_of(std::begin(VideoSubtitle::ms_nInstanceCount), std::end(VideoSubtitle::ms_nInstanceCount), isSet);
}
}
