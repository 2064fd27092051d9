#include "fuzzsupport.h"

#include "api/libsubtitle.h"
#include "tests/support/sanitizerhooks.h"
#include "textio/textreader.h"

#include <QtGlobal>

#include <cstdio>
#include <cstdlib>

extern "C" {
#include <libavutil/log.h>
}

/** fontconfig stores offsets instead of pointers to a pattern's elements, which LeakSanitizer does not recognise. */
const char *__lsan_default_suppressions() // NOLINT(bugprone-reserved-identifier)
{
    return "leak:libfontconfig.so\n";
}

FuzzHost::FuzzHost()
{
    qputenv("LC_ALL", "C.UTF-8");
    av_log_set_level(AV_LOG_QUIET);
    m_pHandle = CreateVideoSubtitle(16, 16);
    qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &text) { Require(false, text.toUtf8().constData()); });
    TextReader().Open(QString::fromStdString(m_folder.Write("first.srt", "\xFF\xFE")));
}

FuzzHost::~FuzzHost()
{
    qInstallMessageHandler(nullptr);
    DestroyVideoSubtitle(m_pHandle);
}

const FuzzHost &FuzzHost::Get()
{
    static const FuzzHost host;
    return host;
}

std::string FuzzHost::Write(const std::string &strName, const std::string &bytes) const
{
    return m_folder.Write(strName, bytes);
}

void FuzzHost::Remove(const std::string &strName) const
{
    std::filesystem::remove(m_folder.Path() / strName);
}

void Require(bool bHolds, const char *pszWhat)
{
    if (bHolds)
        return;
    (void)std::fprintf(stderr, "does not hold: %s\n", pszWhat);
    std::abort();
}
