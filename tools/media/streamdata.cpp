#include "media/streamdata.h"

#include <algorithm>
#include <cstring>

#define SUBBURN_CODED_SIDE_DATA (LIBAVFORMAT_VERSION_INT >= AV_VERSION_INT(60, 15, 100))

namespace
{

struct PictureType {
    AVPacketSideDataType ofStream;
    AVFrameSideDataType ofFrame;
};

// The data has the same layout in streams and frames.
const std::array<PictureType, 6> PictureTypes = {
    {{AV_PKT_DATA_DISPLAYMATRIX, AV_FRAME_DATA_DISPLAYMATRIX},
     {AV_PKT_DATA_STEREO3D, AV_FRAME_DATA_STEREO3D},
     {AV_PKT_DATA_SPHERICAL, AV_FRAME_DATA_SPHERICAL},
     {AV_PKT_DATA_MASTERING_DISPLAY_METADATA, AV_FRAME_DATA_MASTERING_DISPLAY_METADATA},
     {AV_PKT_DATA_CONTENT_LIGHT_LEVEL, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL},
     {AV_PKT_DATA_AFD, AV_FRAME_DATA_AFD}}};

struct SideDataList {
    const AVPacketSideData *pFirst;
    int nCount;

    const AVPacketSideData *begin() const { return pFirst; }
    const AVPacketSideData *end() const { return pFirst + nCount; }
};

SideDataList SideDataOf(const AVStream &stream)
{
#if SUBBURN_CODED_SIDE_DATA
    return {stream.codecpar->coded_side_data, stream.codecpar->nb_coded_side_data};
#else
    return {stream.side_data, stream.nb_side_data};
#endif
}

void SetSideData(AVStream &stream, AVPacketSideDataType type, const uint8_t *pData, size_t nSize)
{
#if SUBBURN_CODED_SIDE_DATA
    AVPacketSideData *pNew = av_packet_side_data_new(&stream.codecpar->coded_side_data,
                                                     &stream.codecpar->nb_coded_side_data, type, nSize, 0);
    std::memcpy(Checked(pNew)->data, pData, nSize);
#else
    std::memcpy(Checked(av_stream_new_side_data(&stream, type, nSize)), pData, nSize);
#endif
}

struct Bytes {
    const uint8_t *pData;
    size_t nSize;
};

Bytes Find(const AVStream &stream, const AVFrame &first, const PictureType &type)
{
    for (const AVPacketSideData &data : SideDataOf(stream)) {
        if (data.type == type.ofStream)
            return {data.data, data.size};
    }
    const AVFrameSideData *pOfFrame = av_frame_get_side_data(&first, type.ofFrame);
    return pOfFrame ? Bytes{pOfFrame->data, pOfFrame->size} : Bytes{nullptr, 0};
}

} // namespace

const uint8_t *FindPictureSideData(const AVStream &stream, const AVFrame &first, AVPacketSideDataType type)
{
    const auto *const pType = std::find_if(PictureTypes.begin(), PictureTypes.end(),
                                           [&](const PictureType &candidate) { return candidate.ofStream == type; });
    return pType != PictureTypes.end() ? Find(stream, first, *pType).pData : nullptr;
}

void CopyAllSideData(const AVStream &from, AVStream &to)
{
    for (const AVPacketSideData &data : SideDataOf(from))
        SetSideData(to, data.type, data.data, data.size);
}

void CopyPictureSideData(const AVStream &from, const AVFrame &first, AVStream &to, bool bMatrix)
{
    for (const PictureType &type : PictureTypes) {
        if (type.ofStream == AV_PKT_DATA_DISPLAYMATRIX && !bMatrix)
            continue;
        const Bytes bytes = Find(from, first, type);
        if (bytes.pData)
            SetSideData(to, type.ofStream, bytes.pData, bytes.nSize);
    }
}
