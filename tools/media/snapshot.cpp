#include "media/snapshot.h"

#include "commandline/failure.h"
#include "commandline/report.h"
#include "commandline/values.h"
#include "media/frameburner.h"
#include "media/frameconverter.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace
{

PacketPtr EncodePng(const AVFrame &picture)
{
    const AVCodec *pCodec = avcodec_find_encoder(AV_CODEC_ID_PNG);
    if (!pCodec)
        throw Failure(ExitCode::Output, "this FFmpeg writes no PNG pictures");
    const CodecPtr pContext = Checked(CodecPtr(avcodec_alloc_context3(pCodec)));
    pContext->width = picture.width;
    pContext->height = picture.height;
    pContext->pix_fmt = AV_PIX_FMT_RGB24;
    pContext->time_base = {1, 1};
    pContext->sample_aspect_ratio = picture.sample_aspect_ratio;
    PacketPtr pPacket = NewPacket();
    int nResult = avcodec_open2(pContext.get(), pCodec, nullptr);
    for (const AVFrame *pFrame : {&picture, static_cast<const AVFrame *>(nullptr)}) {
        if (nResult >= 0)
            nResult = avcodec_send_frame(pContext.get(), pFrame);
    }
    if (nResult >= 0)
        nResult = avcodec_receive_packet(pContext.get(), pPacket.get());
    if (nResult < 0)
        throw Failure(ExitCode::Output, "the PNG picture cannot be made: " + AvReason(nResult));
    return pPacket;
}

} // namespace

Snapshot::Snapshot(const Options &options, const SubtitleLibrary &library, Console &console) :
    m_options(options), m_library(library), m_console(console), m_input(options.strInput)
{
    for (unsigned n = 0; n < m_input.Format().nb_streams; ++n) {
        if (static_cast<int>(n) != m_input.Video().index)
            m_input.Ignore(static_cast<int>(n));
    }
}

std::string Snapshot::FileName(size_t nIndex) const
{
    if (m_options.listSnapshots.size() == 1)
        return m_options.strOutput;
    const std::filesystem::path path(m_options.strOutput);
    const std::string strName = path.stem().string() + "-" + std::to_string(nIndex + 1) + path.extension().string();
    return (path.parent_path() / strName).string();
}

void Snapshot::Run()
{
    std::vector<std::unique_ptr<PendingFile>> listFiles;
    for (size_t n = 0; n < m_options.listSnapshots.size(); ++n) {
        PendingFile::RefuseSame(FileName(n), m_options.strInput);
        for (const Subtitle &subtitle : m_options.listSubtitles)
            PendingFile::RefuseSame(FileName(n), subtitle.source.strFile);
        PendingFile::CheckReplacing(FileName(n), m_options.replacing);
        listFiles.push_back(std::make_unique<PendingFile>(FileName(n)));
    }
    std::unique_ptr<SubtitleStack> pSubtitles;
    std::unique_ptr<FrameBurner> pBurner;
    BurnCounts counts(m_options.listSubtitles);
    std::vector<std::string> listNotes;
    for (size_t n = 0; n < listFiles.size(); ++n) {
        FramePtr pFrame = FrameAt(m_options.listSnapshots[n]);
        pFrame->sample_aspect_ratio = m_input.SampleAspectRatio(pFrame.get());
        const Orientation orientation = Orientation::Of(m_input.Video(), *pFrame);
        if (n == 0)
            WarnOfLostMatrix(m_console, m_options.strOutput, orientation);
        FrameConverter(pFrame->width, pFrame->height, AV_PIX_FMT_RGB24, orientation).Convert(pFrame);
        if (!pSubtitles || pSubtitles->Width() != pFrame->width || pSubtitles->Height() != pFrame->height) {
            pSubtitles =
                std::make_unique<SubtitleStack>(m_library, pFrame->width, pFrame->height, m_options, m_console);
            pBurner = std::make_unique<FrameBurner>(*pSubtitles, Orientation(nullptr));
        }
        pSubtitles->SetPixelAspect(pFrame->sample_aspect_ratio);
        const int64_t nTime = pFrame->pts - m_input.Origin();
        pBurner->Burn(pFrame, av_rescale_q(nTime, m_input.Video().time_base, Milliseconds));
        counts.Add(pBurner->Dues());
        Save(*pFrame, *listFiles[n], FileName(n));
        listNotes.push_back(FileName(n) + ": the picture at " +
                            TimeText(av_rescale_q(nTime, m_input.Video().time_base, Microseconds)) + ", " +
                            counts.TextOf(pBurner->Dues()));
    }
    for (const auto &pFile : listFiles)
        pFile->Commit();
    WarnOfDamage(m_console, m_options.strInput, m_input.Damaged());
    WarnOfUnseen(m_console, counts);
    for (const std::string &strNote : listNotes)
        m_console.Note(strNote);
}

/** The picture on display at a time: the last that begins then or before, else the first. */
FramePtr Snapshot::FrameAt(int64_t nTime)
{
    const AVRational base = m_input.Video().time_base;
    const int64_t nTimeStamp = m_input.Origin() + av_rescale_q_rnd(nTime, Microseconds, base, AV_ROUND_DOWN);
    m_input.SeekBefore(nTimeStamp);
    FramePtr pShown;
    MediaItem item;
    while (m_input.Next(item)) {
        if (!item.pFrame)
            continue;
        if (item.pFrame->pts > nTimeStamp)
            return pShown ? std::move(pShown) : std::move(item.pFrame);
        pShown = std::move(item.pFrame);
    }
    if (!pShown)
        throw Failure(ExitCode::Input, m_options.strInput, "no picture could be decoded");
    if (nTimeStamp >= m_input.TimeAfter(*pShown))
        throw Failure(ExitCode::Input, m_options.strInput,
                      "there is no picture at " + TimeText(nTime) + ", the video ends at " +
                          TimeText(av_rescale_q(m_input.TimeAfter(*pShown) - m_input.Origin(), base, Microseconds)));
    return pShown;
}

void Snapshot::Save(const AVFrame &picture, const PendingFile &file, const std::string &strName)
{
    const PacketPtr pPacket = EncodePng(picture);
    std::ofstream stream(file.Path(), std::ios::binary);
    stream.write(reinterpret_cast<const char *>(pPacket->data), pPacket->size);
    stream.close();
    if (!stream)
        throw Failure(ExitCode::Output, strName, std::generic_category().message(errno));
}
