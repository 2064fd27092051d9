#pragma once

#include <QByteArray>
#include <QString>

#include <iconv.h>
#include <memory>
#include <mutex>
#include <string>

/**
 * An 8-bit encoding by the name that the C library has for it, which is how locales name theirs. Qt 6 has but few of them, and
 * takes every locale's encoding for UTF-8. One object serves any number of threads.
 *
 * Bytes that are not valid in the encoding become U+FFFD, one by one; characters that it has not got become '?'.
 */
class LocaleCodec
{
public:
    /** @param name  a codeset of the locale's; UTF-8 where the C library does not know it, and for plain ASCII. */
    explicit LocaleCodec(const std::string &name);
    ~LocaleCodec();
    LocaleCodec(const LocaleCodec &) = delete;
    LocaleCodec &operator=(const LocaleCodec &) = delete;

    bool IsUtf8() const { return m_pDecoder == Closed; }

    QString Decode(const char *bytes, qsizetype size) const;
    QByteArray Encode(const QString &text) const;

    /** The one for unmarked text and for names; see the functions below. */
    static std::shared_ptr<const LocaleCodec> Current();

    /** Chooses the codec of the environment's locale: where no host's Qt takes a stand. */
    static void UseEnvironment();
    /** Chooses what the host's Qt takes for the encoding of the locale, also when that changes. */
    static void UseQt();
    /** Chooses a codec by its name. */
    static void Use(const std::string &name);

private:
    static inline const iconv_t Closed = iconv_t(-1); // NOLINT(performance-no-int-to-ptr): as iconv_open() has it

    mutable std::mutex m_mutex;
    iconv_t m_pDecoder = Closed;
    iconv_t m_pEncoder = Closed;
};
