// Runs the stored inputs of a target, each as a test of its own.
#include "fuzzsupport.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <algorithm>
#include <cctype>
#include <ctime>
#include <sstream>
#include <vector>

namespace
{

constexpr double MostSeconds = 10;
constexpr long MostKilobytes = 1024L * 1024;

std::vector<std::filesystem::path> StoredFiles()
{
    std::vector<std::filesystem::path> listFiles;
    std::istringstream folders(STORED_INPUTS);
    for (std::string strFolder; std::getline(folders, strFolder, ':');) {
        if (!std::filesystem::is_directory(strFolder))
            continue;
        for (const auto &entry : std::filesystem::directory_iterator(strFolder))
            listFiles.push_back(entry.path());
    }
    std::sort(listFiles.begin(), listFiles.end());
    return listFiles;
}

std::string TestName(const testing::TestParamInfo<std::filesystem::path> &info)
{
    std::string strName = info.param.parent_path().parent_path().filename() / info.param.filename();
    std::replace_if(
        strName.begin(), strName.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return strName;
}

class StoredInputs : public testing::TestWithParam<std::filesystem::path>
{
};

} // namespace

TEST_P(StoredInputs, Pass)
{
    std::ifstream file(GetParam(), std::ios::binary);
    ASSERT_TRUE(file.is_open());
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const std::vector<std::uint8_t> exact(bytes.begin(), bytes.end());
    const std::clock_t start = std::clock();
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
    EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, MostSeconds);
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    EXPECT_LT(usage.ru_maxrss, MostKilobytes);
}

TEST(StoredInputsTest, AreThere)
{
    EXPECT_FALSE(StoredFiles().empty());
}

INSTANTIATE_TEST_SUITE_P(All, StoredInputs, testing::ValuesIn(StoredFiles()), TestName);
