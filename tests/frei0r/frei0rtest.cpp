#include "frei0rtest.h"

#include <dlfcn.h>

Plugin::Plugin() : m_pLibrary(dlopen(PLUGIN, RTLD_NOW | RTLD_LOCAL))
{
    if (!m_pLibrary)
        throw std::runtime_error(dlerror());
    EXPECT_EQ(PLUGIN_CALL(*this, f0r_init)(), 1);
}

Plugin::~Plugin()
{
    PLUGIN_CALL(*this, f0r_deinit)();
    dlclose(m_pLibrary);
}

void *Plugin::Symbol(const char *pName) const
{
    void *pSymbol = dlsym(m_pLibrary, pName);
    if (!pSymbol)
        throw std::runtime_error(dlerror());
    return pSymbol;
}

Instance::Instance(const Plugin &plugin, unsigned nWidth, unsigned nHeight) :
    m_plugin(plugin), m_pInstance(PLUGIN_CALL(plugin, f0r_construct)(nWidth, nHeight))
{
}

Instance::~Instance()
{
    if (m_pInstance)
        PLUGIN_CALL(m_plugin, f0r_destruct)(m_pInstance);
}

int Instance::Find(const char *pName, int nType) const
{
    f0r_plugin_info_t plugin = {};
    PLUGIN_CALL(m_plugin, f0r_get_plugin_info)(&plugin);
    for (int n = 0; n < plugin.num_params; ++n) {
        f0r_param_info_t info = {};
        PLUGIN_CALL(m_plugin, f0r_get_param_info)(&info, n);
        if (info.name == std::string(pName) && info.type == nType)
            return n;
    }
    throw std::runtime_error(pName);
}

void Instance::Set(int nParameter, void *pValue) const
{
    PLUGIN_CALL(m_plugin, f0r_set_param_value)(m_pInstance, pValue, nParameter);
}

void Instance::Get(int nParameter, void *pValue) const
{
    PLUGIN_CALL(m_plugin, f0r_get_param_value)(m_pInstance, pValue, nParameter);
}

// Overwrites the text afterwards: the plugin must not keep the pointer.
void Instance::SetText(const char *pName, const std::string &strValue) const
{
    std::string strCopy = strValue;
    f0r_param_string pText = strCopy.data();
    Set(Find(pName, F0R_PARAM_STRING), &pText);
    strCopy.assign(strCopy.size(), '#');
}

// Booleans are passed as doubles, like numbers.
void Instance::SetNumber(const char *pName, double fValue) const
{
    const bool bFlag = std::string("milliseconds bold italic natural").find(pName) != std::string::npos;
    Set(Find(pName, bFlag ? F0R_PARAM_BOOL : F0R_PARAM_DOUBLE), &fValue);
}

void Instance::SetColor(const char *pName, float fRed, float fGreen, float fBlue) const
{
    f0r_param_color_t color = {fRed, fGreen, fBlue};
    Set(Find(pName, F0R_PARAM_COLOR), &color);
}

std::string Instance::Text(const char *pName) const
{
    f0r_param_string pText = nullptr;
    Get(Find(pName, F0R_PARAM_STRING), &pText);
    return pText;
}

double Instance::Number(const char *pName) const
{
    const bool bFlag = std::string("milliseconds bold italic natural").find(pName) != std::string::npos;
    double fValue = -1;
    Get(Find(pName, bFlag ? F0R_PARAM_BOOL : F0R_PARAM_DOUBLE), &fValue);
    return fValue;
}

f0r_param_color_t Instance::Color(const char *pName) const
{
    f0r_param_color_t color = {-1, -1, -1};
    Get(Find(pName, F0R_PARAM_COLOR), &color);
    return color;
}

std::string Instance::Update(const std::string &strFrame, double fTime) const
{
    std::string strOut(strFrame.size(), '\x55');
    Update(fTime, strFrame.data(), strOut.data());
    return strOut;
}

void Instance::Update(double fTime, const void *pIn, void *pOut) const
{
    PLUGIN_CALL(m_plugin, f0r_update)
    (m_pInstance, fTime, static_cast<const std::uint32_t *>(pIn), static_cast<std::uint32_t *>(pOut));
}

std::string Frei0rTest::Frame(int nNumber, bool bOpaque)
{
    std::string strFrame;
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            for (const int nByte : {60 + (x + 3 * nNumber) % 120, 60 + y % 120, 60 + nNumber, 20 + (x + y) % 200})
                strFrame += static_cast<char>(nByte);
            if (bOpaque)
                strFrame.back() = '\xff';
        }
    }
    return strFrame;
}
