#include "render/messagesilencer.h"

#include <QString>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace
{

std::vector<std::string> &Heard()
{
    static std::vector<std::string> listTexts;
    return listTexts;
}

void Hear(QtMsgType /*type*/, const QMessageLogContext & /*context*/, const QString &text)
{
    Heard().push_back(text.toStdString());
}

void HearOtherwise(QtMsgType /*type*/, const QMessageLogContext & /*context*/, const QString &text)
{
    Heard().push_back("otherwise " + text.toStdString());
}

/** Makes Hear() the host's message handler. */
class MessageSilencerTest : public testing::Test
{
protected:
    MessageSilencerTest() : m_before(qInstallMessageHandler(Hear)) { Heard().clear(); }
    ~MessageSilencerTest() override { qInstallMessageHandler(m_before); }

    QtMessageHandler m_before;
};

using Texts = std::vector<std::string>;

} // namespace

TEST_F(MessageSilencerTest, SilencesItsThreadWhileItLives)
{
    qWarning("before");
    {
        const MessageSilencer silencer;
        qWarning("during");
        {
            const MessageSilencer inner;
            qWarning("deeper");
        }
        qWarning("still");
    }
    qWarning("after");
    EXPECT_EQ(Heard(), Texts({"before", "after"}));
}

TEST_F(MessageSilencerTest, LetsOtherThreadsSpeakToTheHost)
{
    const MessageSilencer silencer;
    std::thread([] { qWarning("elsewhere"); }).join();
    qWarning("here");
    EXPECT_EQ(Heard(), Texts({"elsewhere"}));
}

TEST_F(MessageSilencerTest, KeepsTheHandlerThatTheHostInstalledMeanwhile)
{
    {
        const MessageSilencer silencer;
        qInstallMessageHandler(HearOtherwise);
    }
    qWarning("after");
    EXPECT_EQ(Heard(), Texts({"otherwise after"}));
}
