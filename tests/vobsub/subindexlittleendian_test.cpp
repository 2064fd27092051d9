// In a program of its own: the first UTF-16 file of a process decides the byte order of all.
#include "support/wideindextest.h"

namespace
{

class SubIndexLittleEndianTest : public WideIndexTest
{
protected:
    SubIndexLittleEndianTest() : WideIndexTest(false) {}
};

} // namespace

TEST_F(SubIndexLittleEndianTest, ReadsAnIndex)
{
    ExpectRead();
}

TEST_F(SubIndexLittleEndianTest, LanguageOnTheLastLineIsRefusedAndTouchesNothing)
{
    ExpectLanguageOnTheLastLineRefused();
}
