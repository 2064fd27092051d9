#pragma once

#include <libsubtitle.h>
#include <libsubtitleframe.h>

#include <string>

/** The functions of libsubtitle and libsubtitleframe, loaded at run time. */
class SubtitleLibrary
{
public:
    /** Throws a Failure if a library or one of its functions is missing. */
    SubtitleLibrary();

    decltype(&::CreateVideoSubtitle) m_pCreate = nullptr;
    decltype(&::DestroyVideoSubtitle) m_pDestroy = nullptr;
    decltype(&::SetSubtitleFile) m_pSetFile = nullptr;
    decltype(&::SetSubtitleTimeStamp) m_pSetTimeStamp = nullptr;
    decltype(&::SetSubtitleAlpah) m_pSetOpacity = nullptr;
    decltype(&::SetSubtitlePos) m_pSetPosition = nullptr;
    decltype(&::SetSubtitleFontParam) m_pSetFont = nullptr;
    decltype(&::SetSubtitleFontColor) m_pSetColor = nullptr;
    decltype(&::SetSubtitleOutlineColor) m_pSetOutlineColor = nullptr;
    decltype(&::SubtitlePixelFormat) m_pPixelFormat = nullptr;
    decltype(&::CreateSubtitleBurner) m_pCreateBurner = nullptr;
    decltype(&::DestroySubtitleBurner) m_pDestroyBurner = nullptr;
    decltype(&::SetSubtitleBurnerLook) m_pSetLook = nullptr;
    decltype(&::SetSubtitleBurnerOutline) m_pSetOutlineWidth = nullptr;
    decltype(&::SetSubtitleBurnerPixelAspect) m_pSetPixelAspect = nullptr;
    decltype(&::SetSubtitleBurnerTakenRows) m_pSetTakenRows = nullptr;
    decltype(&::FindSubtitleRows) m_pFindRows = nullptr;
    decltype(&::IsSubtitleDue) m_pIsDue = nullptr;
    decltype(&::BurnSubtitleAVFrame) m_pBurn = nullptr;

private:
    void Load(const char *pName);

    template <typename Function>
    void Resolve(Function &pFunction, const char *pName);

    // Never closed: the libraries it depends on do not survive being unloaded.
    void *m_pLibrary = nullptr;
    std::string m_strFile;
};
