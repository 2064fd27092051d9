// As for the other byte order, in a program of its own.
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
