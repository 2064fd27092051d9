#include "subtitles/textencoding.h"

#include "commandline/failure.h"
#include "commandline/printable.h"

#include <iconv.h>
#include <langinfo.h>
#include <uchardet.h>

#include <array>
#include <cerrno>
#include <memory>
#include <optional>
#include <system_error>

namespace
{

const char *const Automatic = "auto";
const char *const Utf8 = "UTF-8";

/** Converts text to UTF-8 by iconv. */
class Converter
{
public:
    explicit Converter(const std::string &strEncoding) : m_handle(iconv_open(Utf8, strEncoding.c_str())) {}

    ~Converter()
    {
        if (IsOpen())
            iconv_close(m_handle);
    }

    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;

    /** @return false if iconv does not know the encoding. */
    bool IsOpen() const { return m_handle != reinterpret_cast<iconv_t>(-1); } // NOLINT(performance-no-int-to-ptr)

    /** @return nullopt if bytes are not valid in the encoding. */
    std::optional<std::string> Convert(const std::string &strBytes) const
    {
        std::string strText;
        // iconv() only reads it.
        char *pIn = const_cast<char *>(strBytes.data());
        size_t nIn = strBytes.size();
        // The last round, without input, flushes the state of the encoding.
        for (bool bLast = false; !bLast;) {
            bLast = nIn == 0;
            std::array<char, 4096> listOut{};
            char *pOut = listOut.data();
            size_t nOut = listOut.size();
            const size_t nResult = iconv(m_handle, bLast ? nullptr : &pIn, &nIn, &pOut, &nOut);
            strText.append(listOut.data(), pOut);
            if (nResult == static_cast<size_t>(-1) && errno != E2BIG)
                return std::nullopt;
        }
        return strText;
    }

private:
    iconv_t m_handle;
};

std::string GuessOf(const std::string &strBytes)
{
    struct Delete {
        void operator()(uchardet_t pDetector) const { uchardet_delete(pDetector); }
    };
    const std::unique_ptr<uchardet, Delete> pDetector(uchardet_new());
    if (!pDetector || uchardet_handle_data(pDetector.get(), strBytes.data(), strBytes.size()) != 0)
        throw std::bad_alloc();
    uchardet_data_end(pDetector.get());
    return uchardet_get_charset(pDetector.get());
}

bool Begins(const std::string &strBytes, const char *pMark)
{
    return strBytes.rfind(pMark, 0) == 0;
}

} // namespace

TextEncoding::TextEncoding(const std::string &strName) : m_strName(strName)
{
    if (!strName.empty() && strName != Automatic && !Converter(strName).IsOpen())
        throw Failure(ExitCode::Usage, "--encoding: there is no encoding named \"" + strName + "\"");
}

std::string TextEncoding::ToUtf8(const std::string &strBytes, const std::string &strFile)
{
    if (Begins(strBytes, "\xef\xbb\xbf"))
        return strBytes.substr(3);
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no locale is set once other threads run
    std::string strName = m_strName.empty() ? nl_langinfo(CODESET) : m_strName;
    if (Begins(strBytes, "\xff\xfe") || Begins(strBytes, "\xfe\xff"))
        strName = "UTF-16";
    if (strName == Automatic) {
        if (IsUtf8(strBytes))
            return strBytes;
        strName = m_strGuess = GuessOf(strBytes);
    }
    if (strName == Utf8 && IsUtf8(strBytes))
        return strBytes;
    const Converter converter(strName);
    const std::optional<std::string> strText = converter.IsOpen() ? converter.Convert(strBytes) : std::nullopt;
    if (strText)
        return *strText;
    if (m_strName == Automatic)
        throw Failure(ExitCode::Input, strFile, "its encoding cannot be guessed; --encoding NAME reads it");
    throw Failure(ExitCode::Input, strFile,
                  "is not valid " + strName + "; --encoding NAME reads it, such as " +
                      (strName == "windows-1252" ? "windows-1251" : "windows-1252") + ", and --encoding auto guesses");
}
