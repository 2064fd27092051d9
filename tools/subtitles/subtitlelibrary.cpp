#include "subtitles/subtitlelibrary.h"

#include "commandline/failure.h"

#include <dlfcn.h>

#include <filesystem>

namespace
{

std::string LastError()
{
    const char *pError = dlerror(); // NOLINT(concurrency-mt-unsafe): glibc keeps it per thread
    return pError ? pError : "unknown error";
}

} // namespace

SubtitleLibrary::SubtitleLibrary()
{
    Load("libsubtitle.so." SUBTITLE_SOVERSION);
    Resolve(m_pCreate, "CreateVideoSubtitle");
    Resolve(m_pDestroy, "DestroyVideoSubtitle");
    Resolve(m_pSetFile, "SetSubtitleFile");
    Resolve(m_pSetTimeStamp, "SetSubtitleTimeStamp");
    Resolve(m_pSetOpacity, "SetSubtitleAlpah");
    Resolve(m_pSetPosition, "SetSubtitlePos");
    Resolve(m_pSetFont, "SetSubtitleFontParam");
    Resolve(m_pSetColor, "SetSubtitleFontColor");
    Resolve(m_pSetOutlineColor, "SetSubtitleOutlineColor");
    Load("libsubtitleframe.so." SUBTITLE_SOVERSION);
    Resolve(m_pPixelFormat, "SubtitlePixelFormat");
    Resolve(m_pCreateBurner, "CreateSubtitleBurner");
    Resolve(m_pDestroyBurner, "DestroySubtitleBurner");
    Resolve(m_pSetLook, "SetSubtitleBurnerLook");
    Resolve(m_pSetOutlineWidth, "SetSubtitleBurnerOutline");
    Resolve(m_pSetPixelAspect, "SetSubtitleBurnerPixelAspect");
    Resolve(m_pSetTakenRows, "SetSubtitleBurnerTakenRows");
    Resolve(m_pFindRows, "FindSubtitleRows");
    Resolve(m_pIsDue, "IsSubtitleDue");
    Resolve(m_pBurn, "BurnSubtitleAVFrame");
}

void SubtitleLibrary::Load(const char *pName)
{
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for (const char *pSubfolder : {".", "../lib", SUBBURN_RELATIVE_LIBDIR}) {
        m_strFile = (folder / pSubfolder / pName).lexically_normal().string();
        if (error || !std::filesystem::exists(m_strFile, error))
            continue;
        m_pLibrary = dlopen(m_strFile.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!m_pLibrary)
            throw Failure(ExitCode::Library, m_strFile, LastError());
        return;
    }
    m_strFile = pName;
    m_pLibrary = dlopen(pName, RTLD_NOW | RTLD_LOCAL);
    if (!m_pLibrary)
        throw Failure(ExitCode::Library, pName, "the library is neither beside subburn nor installed");
}

template <typename Function>
void SubtitleLibrary::Resolve(Function &pFunction, const char *pName)
{
    pFunction = reinterpret_cast<Function>(dlsym(m_pLibrary, pName));
    if (!pFunction)
        throw Failure(ExitCode::Library, m_strFile, std::string("the library lacks ") + pName);
}
