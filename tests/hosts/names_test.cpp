// Hosts with variables, functions and a class that have the same names as the library's, and hosts with several copies
// of the library. Each runs in a process of its own.
#include "support/decoderhost.h"

using namespace decoderhost;

namespace
{

class NamesTest : public testing::Test
{
protected:
    NamesTest() : m_pair(Width, Height, {{1000, Unit().Encode(), {}}}), m_strIndex(m_pair.Write(m_folder))
    {
        m_strText = m_folder.Write("a.srt", "00:00:01,000 --> 00:00:02,000\nA\n");
    }

    /** Copies the library, or another, to the test's folder. (LD_PRELOAD cannot name a path with blanks.) */
    std::string Copy(const std::string &strName, const char *pLibrary = SUBTITLE_LIBRARY) const
    {
        const auto path = m_folder.Path() / strName;
        std::filesystem::copy_file(pLibrary, path);
        return path.string();
    }

    static Bytes Run(const char *pHost, const std::string &strFile, const std::vector<std::string> &listLibraries,
                     const ChildProcess::Environment &environment = {})
    {
        std::vector<std::string> listArguments = {strFile, std::to_string(Width), std::to_string(Height), "1500"};
        listArguments.insert(listArguments.end(), listLibraries.begin(), listLibraries.end());
        return Output(pHost, listArguments, "", environment);
    }

    /** Expects the host to show the picture and the text with each of the libraries. */
    void ExpectShows(const char *pHost, const std::vector<std::string> &listLibraries,
                     const ChildProcess::Environment &environment = {})
    {
        const Bytes picture = FramePlainly(m_pair);
        const Bytes text = Run(NAME_PROBE, m_strText, {SUBTITLE_LIBRARY});
        Bytes pictures;
        Bytes texts;
        for (std::size_t i = 0; i < listLibraries.size(); ++i) {
            pictures.insert(pictures.end(), picture.begin(), picture.end());
            texts.insert(texts.end(), text.begin(), text.end());
        }
        EXPECT_TRUE(Run(pHost, m_strIndex, listLibraries, environment) == pictures);
        EXPECT_TRUE(Run(pHost, m_strText, listLibraries, environment) == texts);
    }

    TemporaryFolder m_folder;
    VobSubPair m_pair;
    std::string m_strIndex;
    std::string m_strText;
};

} // namespace

TEST_F(NamesTest, OfAProgramThatLoadsTheLibrary)
{
    ExpectShows(NAME_PROBE, {SUBTITLE_LIBRARY});
    ExpectShows(NAME_PROBE_OWN, {SUBTITLE_LIBRARY});
}

TEST_F(NamesTest, OfAProgramThatIsLinkedWithTheLibrary)
{
    ExpectShows(NAME_PROBE_LINKED, {"linked"});
}

#ifndef SANITIZED // sanitizers report preloaded variables of the same name
TEST_F(NamesTest, OfAPreloadedLibrary)
{
    const std::string strOwnNames = Copy("libownnames.so", OWN_NAMES_LIBRARY);
    ExpectShows(NAME_PROBE, {SUBTITLE_LIBRARY}, {{"LD_PRELOAD", strOwnNames}});
    ExpectShows(NAME_PROBE_LINKED, {"linked"}, {{"LD_PRELOAD", strOwnNames}});
}
#endif

TEST_F(NamesTest, OfCopiesOfTheLibrary)
{
    const std::string strFirst = Copy("libfirst.so");
    const std::string strSecond = Copy("libsecond.so");
    ExpectShows(NAME_PROBE, {strFirst, strSecond});
    ExpectShows(NAME_PROBE_OWN, {strFirst, SUBTITLE_LIBRARY, strSecond});
    ExpectShows(NAME_PROBE_LINKED, {"linked", strFirst});
    ExpectShows(NAME_PROBE, {SUBTITLE_LIBRARY, strSecond}, {{"LD_PRELOAD", strFirst}});
}
