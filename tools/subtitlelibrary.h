#pragma once

#include <libsubtitle.h>

#include <string>

/** The functions of libsubtitle, found at run time. */
class SubtitleLibrary
{
public:
    /** Loads the library; throws a Failure when there is none. */
    SubtitleLibrary();

    decltype(&::CreateVideoSubtitle) m_pCreate = nullptr;
    decltype(&::DestroyVideoSubtitle) m_pDestroy = nullptr;
    decltype(&::SetSubtitleFile) m_pSetFile = nullptr;
    decltype(&::SetSubtitleTimeStamp) m_pSetTimeStamp = nullptr;
    decltype(&::ProcessSubtitleFrame) m_pProcessFrame = nullptr;
    decltype(&::SetSubtitleAlpah) m_pSetOpacity = nullptr;
    decltype(&::SetSubtitlePos) m_pSetPosition = nullptr;
    decltype(&::SetSubtitleFontParam) m_pSetFont = nullptr;
    decltype(&::SetSubtitleFontColor) m_pSetColor = nullptr;
    decltype(&::SetSubtitleOutlineColor) m_pSetOutlineColor = nullptr;

private:
    void Load();

    template <typename Function>
    void Resolve(Function &pFunction, const char *pName);

    // Never closed: the libraries behind it do not survive being unloaded.
    void *m_pLibrary = nullptr;
    std::string m_strFile;
};
