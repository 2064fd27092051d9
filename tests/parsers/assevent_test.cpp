#include "support/assparsertest.h"

#include <climits>

using namespace std::string_literals;

namespace
{

/** An event's strings. */
struct Texts {
    std::string style;
    std::string actor;
    std::string effect;
    std::string text;
};

bool operator==(const Texts &a, const Texts &b)
{
    return a.style == b.style && a.actor == b.actor && a.effect == b.effect && a.text == b.text;
}

std::ostream &operator<<(std::ostream &out, const Texts &texts)
{
    return out << '[' << texts.style << "][" << texts.actor << "][" << texts.effect << "][" << texts.text << ']';
}

class AssEventTest : public AssParserTest
{
protected:
    /** The only event of a script of the oldest version. */
    AssSubtitleItem Old(const std::string &line) { return Event(line); }
    /** The only event of a script of the newest version. */
    AssSubtitleItem New(const std::string &line) { return Event("ScriptType: v4.00+\n" + line); }
    /** The strings of an event with these fields after its times. */
    Texts Fields(const std::string &fields) { return Strings(New("Dialogue: 0,0:00:01.00,0:00:02.00," + fields)); }
    int Start(const std::string &time) { return New("Dialogue: 0," + time + ",0:00:02.00,S,,0,0,0,,a").nStart; }
    int End(const std::string &time) { return New("Dialogue: 0,0:00:01.00," + time + ",S,,0,0,0,,a").nEnd; }

    static Texts Strings(const AssSubtitleItem &item)
    {
        return {item.strStyle.toStdString(), item.strActor.toStdString(), item.strEffect.toStdString(),
                item.strText.toStdString()};
    }

    std::string Untagged(const std::string &text)
    {
        return m_parser.RemoveSSATags(QString::fromStdString(text)).toStdString();
    }

private:
    AssSubtitleItem Event(const std::string &script)
    {
        Open(script + "\n");
        EXPECT_EQ(m_peer.Items().size(), 1) << script;
        return m_peer.Items().value(0);
    }
};

/** The time when none of its four fields can be read: each counts as -1. */
constexpr int FailedTime = ((-1 * 60 - 1) * 60 - 1) * 1000 - 10;

} // namespace

TEST_F(AssEventTest, NewerLayout)
{
    const auto item = New("Dialogue: 2,0:00:01.50,0:00:04.00,Default,,0,0,0,,Hello, world");
    EXPECT_EQ(item.nLayer, 2);
    EXPECT_EQ(item.nStart, 1500);
    EXPECT_EQ(item.nEnd, 4000);
    EXPECT_EQ(Strings(item), (Texts{"Default", "", "", "Hello, world"}));
    EXPECT_TRUE(item.strEffect.isNull());
    EXPECT_EQ(item.rcMargin, QRect());
}

TEST_F(AssEventTest, OlderLayout)
{
    const std::string line = "Dialogue: Marked=0,0:01:00.00,0:01:02.25,*default,Bob,0000,0000,0000,,Hi";
    for (const auto &item : {Old(line), Old("ScriptType: v4.00\n" + line), Old("[V4+ Styles]\n" + line)}) {
        EXPECT_EQ(item.nLayer, 0);
        EXPECT_EQ(item.nStart, 60000);
        EXPECT_EQ(item.nEnd, 62250);
        EXPECT_EQ(Strings(item), (Texts{"Default", "Bob", "", "Hi"}));
        EXPECT_EQ(item.rcMargin, QRect());
    }
}

TEST_F(AssEventTest, LineOfTheNewerLayoutReadInTheOlder)
{
    auto item = Old("Dialogue: 7,0:00:01.00,0:00:02.00,Style,Bob,0,0,0,Scroll,a, b");
    EXPECT_EQ(item.nLayer, 0);
    EXPECT_EQ(item.nStart, 1000);
    EXPECT_EQ(item.nEnd, 2000);
    EXPECT_EQ(Strings(item), (Texts{"Style", "Bob", "Scroll", "a, b"}));

    item = Old("Dialogue: 7,0:00:01.00,0:00:02.00,Style,Bob,0,0,0,Scroll,a=b, c");
    EXPECT_EQ(item.nStart, FailedTime);
    EXPECT_EQ(item.nEnd, FailedTime);
    EXPECT_EQ(Strings(item), (Texts{"c", "c", "", "c"}));
}

TEST_F(AssEventTest, LayerIsAnyNumber)
{
    EXPECT_EQ(New("Dialogue: -3,0:00:01.00,0:00:02.00,S,,0,0,0,,a").nLayer, -3);
    EXPECT_EQ(New("Dialogue: &H1F,0:00:01.00,0:00:02.00,S,,0,0,0,,a").nLayer, 31);
    EXPECT_EQ(New("Dialogue: x,0:00:01.00,0:00:02.00,S,,0,0,0,,a").nLayer, -1);
    EXPECT_EQ(New("Dialogue: Marked=0,0:00:01.00,0:00:02.00,S,,0,0,0,,a").nLayer, -1);
}

TEST_F(AssEventTest, TimesCountHundredthsWhateverTheirDigits)
{
    const std::pair<const char *, int> times[] = {
        {"0:00:00.00", 0},        {"0:00:01.5", 1050},       {"0:00:01.500", 6000},   {"1:02:03.45", 3723450},
        {" 0: 00: 01. 05", 1050}, {"-1:00:00.00", -3600000}, {"0:00:-1.00", -1000},   {"0:00:01.-5", 950},
        {"x:00:01.00", -3599000}, {"0:x:01.00", -59000},     {"0:00:x.00", -1000},    {"0:00:01.x", 990},
        {"::.", FailedTime},      {"0:00:01.", 990},         {"0:90:90.90", 5490900}, {"0:00:&H10.&h10", 16160},
    };
    for (const auto &[time, ms] : times) {
        EXPECT_EQ(Start(time), ms) << time;
        EXPECT_EQ(End(time), ms) << time;
    }
}

TEST_F(AssEventTest, TimesWrapRoundAt32Bits)
{
    const std::pair<const char *, int> times[] = {
        {"596:31:23.64", 2147483640},
        {"596:31:23.65", -2147483646},
        {"1193:02:47.29", -6},
        {"1193:02:47.30", 4},
        {"2147483647:00:00.00", -3600000},
        {"-2147483648:00:00.00", 0},
        {"2147483648:00:00.00", -3600000},
        {"0:2147483647:00.00", -60000},
        {"0:00:2147483647.00", -1000},
        {"0:00:00.2147483647", -10},
        {"2147483647:2147483647:2147483647.2147483647", -3661010},
    };
    for (const auto &[time, ms] : times) {
        EXPECT_EQ(Start(time), ms) << time;
        EXPECT_EQ(End(time), ms) << time;
    }
}

TEST_F(AssEventTest, TimeWithoutADotTakesFieldsOfTheNext)
{
    const auto item = New("Dialogue: 0,0:00:01,0:00:04.00,Default,,0,0,0,,x");
    EXPECT_EQ(item.nStart, -1000);
    EXPECT_EQ(item.nEnd, FailedTime);
    EXPECT_EQ(Strings(item), (Texts{"", "0", "", "x"}));
}

TEST_F(AssEventTest, StyleNamesAreNormalised)
{
    const std::pair<const char *, const char *> styles[] = {
        {"Default", "Default"},    {"default", "Default"},
        {"DEFAULT", "Default"},    {"*Default", "Default"},
        {"***dEFAULT", "Default"}, {"*", ""},
        {"*Sign", "Sign"},         {"sign", "sign"},
        {"Default ", "Default "},  {"  default", "Default"},
        {"* default", " default"}, {"Default2", "Default2"},
        {"a*b*", "a*b*"},          {"", ""},
    };
    for (const auto &[written, kept] : styles)
        EXPECT_EQ(Fields(written + ",Bob,0,0,0,Fx,text"s), (Texts{kept, "Bob", "Fx", "text"})) << written;
}

TEST_F(AssEventTest, StyleNamesAreNormalisedWhateverTheLastOneWas)
{
    const std::pair<const char *, const char *> styles[] = {
        {"Sign", "Sign"},       {"Sign", "Sign"},  {"*Sign", "Sign"}, {"Sign", "Sign"}, {"Sig", "Sig"},
        {"default", "Default"}, {"*Sign", "Sign"}, {"sign", "sign"},  {"", ""},         {"*", ""},
        {"Default", "Default"}, {"* a", " a"},     {"a", "a"},        {"*a", "a"},      {"DEFAULT", "Default"},
    };
    std::string script = "ScriptType: v4.00+\n";
    for (const auto &[written, kept] : styles)
        script += "Dialogue: 0,0:00:01.00,0:00:02.00,"s + written + ",,0,0,0,,text\n";
    Open(script);
    ASSERT_EQ(m_peer.Items().size(), static_cast<int>(std::size(styles)));
    for (int i = 0; i < m_peer.Items().size(); ++i)
        EXPECT_EQ(m_peer.Items()[i].strStyle.toStdString(), styles[i].second) << i;
}

TEST_F(AssEventTest, FieldsKeepTrailingSpacesAndTextKeepsLeadingOnes)
{
    EXPECT_EQ(Fields(" S ,  Bob  , 1 , 2 , 3 , Fx ,  two  spaces"), (Texts{"S ", "Bob  ", "Fx ", "  two  spaces"}));
    EXPECT_EQ(Fields("S,\tBob,0,0,0,Fx,\ttab"), (Texts{"S", "\tBob", "Fx", "\ttab"}));
}

TEST_F(AssEventTest, MarginsAreDropped)
{
    const auto item = New("Dialogue: 0,0:00:01.00,0:00:02.00,S,,10,20,30,,a");
    EXPECT_EQ(item.rcMargin.left(), 0);
    EXPECT_EQ(item.rcMargin.top(), 0);
    EXPECT_EQ(item.rcMargin.right(), -1);
    EXPECT_EQ(item.rcMargin.bottom(), -1);
    EXPECT_EQ(Fields("S,,x,,&H,Fx,a"), (Texts{"S", "", "Fx", "a"}));
    EXPECT_EQ(m_peer.Margin(), QRect());
}

TEST_F(AssEventTest, EffectThatIsThePrefixOfTheTextIsCleared)
{
    const std::pair<const char *, const char *> kept[] = {
        {"Scroll,Hello", "Scroll"}, {"Hel,Hello", ""}, {"Hello,Hello", ""},    {"Hello you,Hello", ""}, {"Fx,", ""},
        {"hello,Hello", "hello"},   {",Hello", ""},    {"Helx,Hello", "Helx"},
    };
    for (const auto &[fields, effect] : kept)
        EXPECT_EQ(Fields("S,,0,0,0,"s + fields).effect, effect) << fields;
    // The effect is compared with the text as written, tags included.
    EXPECT_EQ(Fields("S,,0,0,0,{a},{a}x"), (Texts{"S", "", "", "x"}));
    EXPECT_EQ(Fields("S,,0,0,0,x,{a}x"), (Texts{"S", "", "x", "x"}));
    EXPECT_EQ(Fields("S,,0,0,0,Fx, Fx"), (Texts{"S", "", "Fx", " Fx"}));
}

TEST_F(AssEventTest, ClearedEffectIsNull)
{
    EXPECT_TRUE(New("Dialogue: 0,0:00:01.00,0:00:02.00,S,,0,0,0,Fx,Fx!").strEffect.isNull());
}

TEST_F(AssEventTest, MissingFieldsRepeatTheLast)
{
    const auto item = New("Dialogue: 0,0:00:01.00,0:00:02.00,Default,Hello");
    EXPECT_EQ(item.nStart, 1000);
    EXPECT_EQ(item.nEnd, 2000);
    EXPECT_EQ(Strings(item), (Texts{"Default", "Hello", "", "Hello"}));
    EXPECT_EQ(Fields("default"), (Texts{"Default", "default", "", "default"}));
    EXPECT_EQ(Fields("S,Bob,0,0,0,text"), (Texts{"S", "Bob", "", "text"}));
    EXPECT_EQ(Fields("S,Bob,0,  text"), (Texts{"S", "Bob", "", "text"}));
    EXPECT_EQ(Strings(New("Dialogue: 0,0:00:01.00,0:00:02.00")), (Texts{"00", "00", "", "00"}));
    EXPECT_EQ(Strings(New("Dialogue:")), (Texts{"", "", "", ""}));
    EXPECT_EQ(New("Dialogue:").nLayer, -1);
    EXPECT_EQ(New("Dialogue:").nStart, FailedTime);
}

TEST_F(AssEventTest, NothingOfAnEventLeaksIntoTheNext)
{
    Open("ScriptType: v4.00+\nDialogue: 5,0:00:01.00,0:00:02.00,S,Bob,1,2,3,Fx,text\n"
         "ScriptType: v4.00\nDialogue: Marked=0,0:00:03.00,0:00:04.00,,,0,0,0,,\n");
    ASSERT_EQ(m_peer.Items().size(), 2);
    EXPECT_EQ(m_peer.Items()[1].nLayer, 0);
    EXPECT_EQ(Strings(m_peer.Items()[1]), (Texts{"", "", "", ""}));
    EXPECT_EQ(m_peer.Items()[0].nLayer, 5);
    EXPECT_EQ(Strings(m_peer.Items()[0]), (Texts{"S", "Bob", "Fx", "text"}));
}

TEST_F(AssEventTest, EventsStayInFileOrderAndNoneIsRejected)
{
    Open("ScriptType: v4.00+\nDialogue: 0,0:00:05.00,0:00:06.00,S,,0,0,0,,late\n"
         "Dialogue: 0,0:00:02.00,0:00:01.00,S,,0,0,0,,backwards\nDialogue: 0,0:00:01.00,0:00:02.00,S,,0,0,0,,\n"
         "Dialogue: 0,0:00:05.00,0:00:06.00,S,,0,0,0,,late\nDialogue: 0,-1:00:00.00,0:00:00.00,S,,0,0,0,,before\n");
    std::vector<std::string> texts;
    for (const AssSubtitleItem &item : m_peer.Items())
        texts.push_back(item.strText.toStdString());
    EXPECT_EQ(texts, (std::vector<std::string>{"late", "backwards", "", "late", "before"}));
    EXPECT_EQ(m_peer.Items()[1].nStart, 2000);
    EXPECT_EQ(m_peer.Items()[1].nEnd, 1000);
    EXPECT_EQ(At(1500), "");
    EXPECT_EQ(At(5500), "late");
}

TEST_F(AssEventTest, BothBoundsBelongToAnEvent)
{
    New("Dialogue: 0,0:00:01.00,0:00:02.00,S,,0,0,0,,text");
    EXPECT_TRUE(m_parser.GetSubtitle(999).isNull());
    EXPECT_EQ(At(1000), "text");
    EXPECT_EQ(At(2000), "text");
    EXPECT_TRUE(m_parser.GetSubtitle(2001).isNull());
    constexpr long Wrapped = static_cast<long>(4294967296LL + 1500); // 1500 again if long has 32 bits
    EXPECT_EQ(m_parser.GetSubtitle(Wrapped).isNull(), Wrapped != 1500);
    EXPECT_TRUE(m_parser.GetSubtitle(LONG_MAX).isNull());
    EXPECT_TRUE(m_parser.GetSubtitle(LONG_MIN).isNull());
}

TEST_F(AssEventTest, NothingIsDueAtTimeZero)
{
    New("Dialogue: 0,-1:00:00.00,0:00:02.00,S,,0,0,0,,text");
    EXPECT_TRUE(m_parser.GetSubtitle(0).isNull());
    EXPECT_TRUE(m_parser.GetSubtitle(-1).isNull());
    EXPECT_EQ(At(1), "text");
    New("Dialogue: 0,0:00:00.00,0:00:02.00,S,,0,0,0,,text");
    EXPECT_TRUE(m_parser.GetSubtitle(0).isNull());
}

TEST_F(AssEventTest, FirstInTheFileWinsAnOverlap)
{
    Open("ScriptType: v4.00+\nDialogue: 0,0:00:02.00,0:00:05.00,S,,0,0,0,,first\n"
         "Dialogue: 9,0:00:01.00,0:00:06.00,S,,0,0,0,,second\n");
    EXPECT_EQ(At(1999), "second");
    for (const long ms : {2000, 3500, 5000})
        EXPECT_EQ(At(ms), "first");
    EXPECT_EQ(At(5001), "second");
}

TEST_F(AssEventTest, TagsAreRemovedFromTheText)
{
    EXPECT_EQ(Fields("S,{a},0,0,0,{b},{\\an8}Top{\\i1}line\\Nsecond"), (Texts{"S", "{a}", "{b}", "Topline\nsecond"}));
}

TEST_F(AssEventTest, RemoveSSATags)
{
    const std::pair<const char *, const char *> texts[] = {
        {"", ""},
        {"plain", "plain"},
        {"{\\an8}Top{\\i1}line\\Nsecond", "Topline\nsecond"},
        {"{}{}a{}", "a"},
        {"{a{b}c}", "c}"},
        {"a}b{c}d", "a}bd"},
        {"}{", "}{"},
        {"a{b", "a{b"},
        {"{\\N}a", "a"},
        {"a\\{x}Nb", "a\nb"},
        {"a\\nb", "a\\nb"},
        {"a\\hb\\\\b", "a\\hb\\\\b"},
        {"\\N\\N", "\n\n"},
        {"\\\\N", "\\\n"},
        {"a\\", "a\\"},
        {"<i>x</i>", "<i>x</i>"},
        {"{b}<i>x</i>", "<i>x</i>"},
        {"<i>x</i>{b}", "<i>x</i>"},
        {"{b}x<", "x<"},
        {"{unclosed <b>bold</b>", "{unclosed bold"},
        {"{x}<i>a</i>{b<u>c</u>", "<i>a</i>{bc"},
        {"<a{b>c", "<a{b>c"},
        {"{a<b<c>d>", "{ad>"},
        {"{a>b<c", "{a>b<c"},
        {"{a>b<c>", "{a>b"},
        {"{a<\\N>\\N", "{a\n"},
        {"{a\\<b>N", "{a\n"},
        {"{x}{y<}z>", "z>"},
    };
    for (const auto &[text, kept] : texts)
        EXPECT_EQ(Untagged(text), kept) << text;
    EXPECT_EQ(m_parser.RemoveSSATags(QString()).size(), 0);
}

TEST_F(AssEventTest, LineBreaksMayBeMany)
{
    std::string text;
    std::string kept;
    for (int i = 0; i < 5000; ++i) {
        text += i % 3 == 0 ? "\\N" : "a\\N\\";
        kept += i % 3 == 0 ? "\n" : "a\n\\";
    }
    EXPECT_EQ(Untagged(text), kept);
}

TEST_F(AssEventTest, RemoveSSATagsLeavesItsArgumentAlone)
{
    const QString text = QStringLiteral("{a}b\\N");
    EXPECT_EQ(m_parser.RemoveSSATags(text).toStdString(), "b\n");
    EXPECT_EQ(text.toStdString(), "{a}b\\N");
}

TEST_F(AssEventTest, ManyTagsInOneLine)
{
    constexpr int Count = 300000;
    std::string tags;
    std::string angles;
    for (int i = 0; i < Count; ++i) {
        tags += "{x}";
        angles += "<x>";
    }
    EXPECT_EQ(Fields("S,,0,0,0,," + tags + "text").text, "text");
    EXPECT_EQ(Fields("S,,0,0,0,,{" + angles + "text").text, "{text");
    const std::string open = '{' + std::string(Count, '<');
    EXPECT_EQ(Fields("S,,0,0,0,," + open).text, open);
    EXPECT_EQ(Fields("S,,0,0,0,," + open + '>').text, "{");
    EXPECT_EQ(Fields("S,,0,0,0,," + std::string(Count, '{')).text, std::string(Count, '{'));
}

TEST_F(AssEventTest, ParseLinesToSubtitleItemDoesNothing)
{
    New("Dialogue: 0,0:00:01.00,0:00:02.00,S,,0,0,0,,text");
    EXPECT_EQ(m_parser.ParseLinesToSubtitleItem(), 1);
    EXPECT_EQ(m_peer.Items().size(), 1);
    EXPECT_EQ(At(1500), "text");
}
