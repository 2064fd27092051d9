// The installed headers, compiled as C++98, the oldest C++ that hosts may be written in.
#include "api/libsubtitle.h"
#include "frames/libsubtitleframe.h"
#include "vobsub/psstream.h"
#include "vobsub/subtitledecoder.h"

typedef char SizeOfPicture[sizeof(AVPicture) >= 8 * sizeof(void *) + 8 * sizeof(int) ? 1 : -1]; // NOLINT(modernize-*)
typedef char SizeOfPlanes[sizeof(SubtitlePlanes) == 9 * sizeof(void *) ? 1 : -1];               // NOLINT(modernize-*)
typedef char
    SizeOfFrame[sizeof(SubtitleFrame) >= 4 * sizeof(void *) + 14 * sizeof(int) ? 1 : -1]; // NOLINT(modernize-*)
