#include "vobsub/decoderstate.h"
#include "vobsub/decoderview.h"

saved_decoder::saved_decoder() : state(decoder)
{
    decoder.Rdptr = nullptr;
}

saved_decoder::~saved_decoder()
{
    if (state.Rdptr)
        Free_Canvas(state.canvas);
}

void saved_decoder::Restore()
{
    subtitle_release();
    if (!state.Rdptr)
        return;
    decoder = state;
    state.Rdptr = nullptr;
    Publish_Canvas();
    Publish_Picture();
}
