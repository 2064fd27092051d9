#include "subtitles/fonts.h"

#include <fontconfig/fontconfig.h>
#include <strings.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>

namespace
{

struct DestroyPattern {
    void operator()(FcPattern *pPattern) const { FcPatternDestroy(pPattern); }
};

using PatternPtr = std::unique_ptr<FcPattern, DestroyPattern>;

const char *FamilyOf(const FcPattern &pattern, int nIndex)
{
    FcChar8 *pFamily = nullptr;
    return FcPatternGetString(&pattern, FC_FAMILY, nIndex, &pFamily) == FcResultMatch
               ? reinterpret_cast<const char *>(pFamily)
               : nullptr;
}

} // namespace

std::string SubstituteFor(const std::string &strFamily)
{
    static const std::array<const char *, 5> Any = {"sans", "sans-serif", "serif", "mono", "monospace"};
    const auto IsName = [&](const char *pName) { return strcasecmp(pName, strFamily.c_str()) == 0; };
    const PatternPtr pWanted(FcPatternCreate());
    if (!pWanted)
        throw std::bad_alloc();
    if (std::any_of(Any.begin(), Any.end(), IsName))
        return "";
    FcPatternAddString(pWanted.get(), FC_FAMILY, reinterpret_cast<const FcChar8 *>(strFamily.c_str()));
    FcConfigSubstitute(nullptr, pWanted.get(), FcMatchPattern);
    FcDefaultSubstitute(pWanted.get());
    FcResult result = FcResultMatch;
    const PatternPtr pFound(FcFontMatch(nullptr, pWanted.get(), &result));
    if (!pFound || !FamilyOf(*pFound, 0))
        return "";
    // A font may have several family names.
    for (int n = 0; const char *pFamily = FamilyOf(*pFound, n); ++n) {
        if (IsName(pFamily))
            return "";
    }
    return FamilyOf(*pFound, 0);
}
