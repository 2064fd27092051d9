#pragma once

#include "frei0r/burnparameters.h"

#include <cstdint>

/** An instance of the plugin: frames of one size, and the parameters for them. One thread at a time. */
class SubtitleBurner
{
public:
    SubtitleBurner(int nWidth, int nHeight) : m_nWidth(nWidth), m_nHeight(nHeight) {}
    ~SubtitleBurner();
    SubtitleBurner(const SubtitleBurner &) = delete;
    SubtitleBurner &operator=(const SubtitleBurner &) = delete;

    /** Changes take effect with the next frame. */
    BurnParameters &Parameters() { return m_parameters; }

    /** Copies the frame from @p pIn to @p pOut unless they are the same, and draws what is due at the host's time. */
    void Update(double fTime, const std::uint32_t *pIn, std::uint32_t *pOut);

private:
    bool Prepare();
    bool MakeHandle();
    void SetFont();
    void SetStyle();
    void SetFile();

    int m_nWidth;
    int m_nHeight;
    BurnParameters m_parameters;
    BurnParameters m_given;
    bool m_bGiven = false; ///< the handle has the parameters in m_given
    void *m_pSubtitle = nullptr;
    void *m_pBurner = nullptr;
    bool m_bOpen = false; ///< the handle has opened the file
};
