#pragma once

#include <QByteArray>
#include <QString>

#include <iconv.h>
#include <memory>
#include <mutex>
#include <string>

/**
 * An 8-bit encoding, by its name in the C library and in locales. Uses iconv, because Qt 6 supports few encodings and
 * assumes UTF-8 in every locale. Thread-safe.
 *
 * Each byte that is not valid in the encoding becomes U+FFFD; characters that it does not have become '?'.
 */
class LocaleCodec
{
public:
    /** @param name  a codeset name as in locales. UTF-8 is used if the C library does not know it, and for ASCII. */
    explicit LocaleCodec(const std::string &name);
    ~LocaleCodec();
    LocaleCodec(const LocaleCodec &) = delete;
    LocaleCodec &operator=(const LocaleCodec &) = delete;

    bool IsUtf8() const { return m_pDecoder == Closed; }

    QString Decode(const char *bytes, qsizetype size) const;
    QByteArray Encode(const QString &text) const;

    /** The codec for file names and for text without a byte-order mark, as the functions below choose it. */
    static std::shared_ptr<const LocaleCodec> Current();

    /** Chooses the codec of the environment's locale, for hosts that do not use Qt. */
    static void UseEnvironment();
    /** Chooses the locale codec of the host's Qt, and follows it if it changes. */
    static void UseQt();
    /** Chooses a codec by its name. */
    static void Use(const std::string &name);

private:
    static inline const iconv_t Closed = iconv_t(-1); // NOLINT(performance-no-int-to-ptr): as iconv_open() has it

    mutable std::mutex m_mutex;
    iconv_t m_pDecoder = Closed;
    iconv_t m_pEncoder = Closed;
};
