// The functions of the plugin. No exception leaves them, since frei0r is an interface for C.
#include "frei0r/subtitleburner.h"

#include <algorithm>
#include <new>

namespace
{

/** The library draws nothing into larger frames. */
constexpr unsigned LargestSide = 1U << 16;

SubtitleBurner &Burner(f0r_instance_t pInstance)
{
    return *static_cast<SubtitleBurner *>(pInstance);
}

} // namespace

int f0r_init()
{
    return 1;
}

void f0r_deinit() {}

void f0r_get_plugin_info(f0r_plugin_info_t *pInfo)
{
    *pInfo = {"subtitleburn",
              "The libsubtitle authors",
              F0R_PLUGIN_TYPE_FILTER,
              F0R_COLOR_MODEL_RGBA8888,
              FREI0R_MAJOR_VERSION,
              VERSION_MAJOR,
              VERSION_MINOR,
              static_cast<int>(Parameter::Count),
              "Burns the subtitles of a file into video frames"};
}

void f0r_get_param_info(f0r_param_info_t *pInfo, int nParameter)
{
    *pInfo = BurnParameters::Info(nParameter);
}

f0r_instance_t f0r_construct(unsigned nWidth, unsigned nHeight)
{
    if (std::min(nWidth, nHeight) < 1 || std::max(nWidth, nHeight) > LargestSide)
        return nullptr;
    return new (std::nothrow) SubtitleBurner(static_cast<int>(nWidth), static_cast<int>(nHeight));
}

void f0r_destruct(f0r_instance_t pInstance)
{
    delete static_cast<SubtitleBurner *>(pInstance);
}

void f0r_set_param_value(f0r_instance_t pInstance, f0r_param_t pValue, int nParameter)
{
    try {
        Burner(pInstance).Parameters().Set(nParameter, pValue);
    } catch (const std::bad_alloc &) {
        return; // the old value stays
    }
}

void f0r_get_param_value(f0r_instance_t pInstance, f0r_param_t pValue, int nParameter)
{
    Burner(pInstance).Parameters().Get(nParameter, pValue);
}

void f0r_update(f0r_instance_t pInstance, double fTime, const uint32_t *pIn, uint32_t *pOut)
{
    try {
        Burner(pInstance).Update(fTime, pIn, pOut);
    } catch (const std::bad_alloc &) {
        return; // the frame has been copied already
    }
}
