#pragma once

#include <memory>

extern "C" {
#include <libavcodec/packet.h>
}

struct FreePacket {
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
};

using PacketPointer = std::unique_ptr<AVPacket, FreePacket>;
