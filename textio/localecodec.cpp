#include "textio/localecodec.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <clocale>
#include <langinfo.h>
#include <new>
#include <utility>

#if QT_VERSION_MAJOR < 6
#include <QTextCodec>
#endif

namespace
{

constexpr std::size_t Failed = static_cast<std::size_t>(-1);
const char Utf8[] = "UTF-8";

iconv_t OpenConverter(const char *to, const char *from)
{
    iconv_t converter = iconv_open(to, from);
    if (converter == iconv_t(-1) && errno == ENOMEM) // NOLINT(performance-no-int-to-ptr): as iconv_open() has it
        throw std::bad_alloc();
    return converter;
}

/**
 * Converts the whole input.
 * @param write  called with each converted part and its size in bytes.
 * @param skip   called where the input cannot be converted, with the rest of it and its size; returns the number of
 *               bytes to leave out.
 */
template <typename Write, typename Skip>
void Convert(iconv_t converter, const char *bytes, std::size_t size, const Write &write, const Skip &skip)
{
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    char *from = const_cast<char *>(bytes); // iconv() does not write to it
    std::array<char, 512> part;
    bool isFlushed = false;
    while (!isFlushed) {
        char *to = part.data();
        std::size_t room = part.size();
        isFlushed = size == 0;
        const std::size_t result =
            isFlushed ? iconv(converter, nullptr, nullptr, &to, &room) : iconv(converter, &from, &size, &to, &room);
        write(part.data(), to - part.data());
        if (result == Failed && errno != E2BIG) {
            const std::size_t skipped = std::min(skip(from, size), size);
            from += skipped;
            size -= skipped;
        }
    }
}

std::mutex mutex;
/** Empty if Qt's codec is used. */
std::string chosenName;
/** Qt's locale codec when chosenName was set. If a host sets another one later, that one is used. */
std::string qtNameBefore;
std::string currentName;
std::shared_ptr<const LocaleCodec> current;

std::string QtName()
{
#if QT_VERSION_MAJOR < 6
    if (const QTextCodec *codec = QTextCodec::codecForLocale())
        return codec->name().toStdString();
#endif
    return Utf8;
}

std::string EnvironmentName()
{
    errno = 0;
    const locale_t locale = newlocale(LC_CTYPE_MASK, "", nullptr);
    if (locale == nullptr && errno == ENOMEM)
        throw std::bad_alloc();
    if (locale == nullptr)
        return Utf8;
    std::string name = nl_langinfo_l(CODESET, locale);
    freelocale(locale);
    return name;
}

} // namespace

LocaleCodec::LocaleCodec(const std::string &name)
{
    // ASCII has no other characters; files that do are more likely to be UTF-8.
    if (name.empty() || name == Utf8 || name == "ANSI_X3.4-1968")
        return;
    m_pDecoder = OpenConverter("UTF-16LE", name.c_str());
    if (m_pDecoder == Closed)
        return;
    m_pEncoder = OpenConverter(name.c_str(), "UTF-16LE");
}

LocaleCodec::~LocaleCodec()
{
    for (const iconv_t converter : {m_pDecoder, m_pEncoder}) {
        if (converter != Closed)
            iconv_close(converter);
    }
}

QString LocaleCodec::Decode(const char *bytes, qsizetype size) const
{
    if (IsUtf8())
        return QString::fromUtf8(bytes, static_cast<int>(size));
    const std::lock_guard<std::mutex> lock(m_mutex);
    QString text;
    Convert(
        m_pDecoder, bytes, static_cast<std::size_t>(size),
        [&](const char *part, std::ptrdiff_t count) {
            text.append(reinterpret_cast<const QChar *>(part), static_cast<int>(count / 2));
        },
        [&](const char * /*from*/, std::size_t /*left*/) {
            text.append(QChar(QChar::ReplacementCharacter));
            return std::size_t{1};
        });
    return text;
}

QByteArray LocaleCodec::Encode(const QString &text) const
{
    if (IsUtf8() || m_pEncoder == Closed)
        return text.toUtf8();
    const std::lock_guard<std::mutex> lock(m_mutex);
    QByteArray bytes;
    Convert(
        m_pEncoder, reinterpret_cast<const char *>(text.constData()), static_cast<std::size_t>(text.size()) * 2,
        [&](const char *part, std::ptrdiff_t count) { bytes.append(part, static_cast<int>(count)); },
        [&](const char *from, std::size_t /*left*/) {
            bytes.append('?');
            const bool isPair = QChar::isHighSurrogate(
                static_cast<char16_t>(static_cast<unsigned char>(from[0]) | static_cast<unsigned char>(from[1]) << 8));
            return std::size_t{isPair ? 4U : 2U};
        });
    return bytes;
}

std::shared_ptr<const LocaleCodec> LocaleCodec::Current()
{
    const std::lock_guard<std::mutex> lock(mutex);
    std::string name = QtName();
    if (!chosenName.empty() && name == qtNameBefore)
        name = chosenName;
    if (!current || name != currentName) {
        current = std::make_shared<const LocaleCodec>(name);
        currentName = std::move(name);
    }
    return current;
}

void LocaleCodec::UseEnvironment()
{
    Use(EnvironmentName());
}

void LocaleCodec::UseQt()
{
    Use({});
}

void LocaleCodec::Use(const std::string &name)
{
    const std::lock_guard<std::mutex> lock(mutex);
    chosenName = name;
    qtNameBefore = QtName();
}
