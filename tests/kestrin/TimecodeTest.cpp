#include <kestrin/Timecode.h>

#include <string>

#include <gtest/gtest.h>

namespace kestrin {
namespace {

constexpr FrameRate kNoRate(0);

std::string Text(TickTime inTime, TimeDisplay inDisplay)
{
    return TimeToTimecodeUTF8(inTime, kNoRate, inDisplay, 0);
}

TickTime Time(std::string_view inText, TimeDisplay inDisplay)
{
    return TimecodeToTime(inText, kNoRate, inDisplay, 0);
}

TickTime Frame(std::int64_t inFrame, TimeDisplay inDisplay)
{
    return TickTime(inFrame, GetFrameRateForTimeDisplay(inDisplay, kNoRate));
}

struct Clock
{
    /// Counts as the standard words it: numbers are left out when a minute begins, unless ten divides it.
    void Step()
    {
        if (++mFrames == mNominal) {
            mFrames = 0;
            mSeconds = (mSeconds + 1) % 60;
            mMinutes = mSeconds == 0 ? (mMinutes + 1) % 60 : mMinutes;
            mHours += mSeconds == 0 && mMinutes == 0 ? 1 : 0;
            if (mSeconds == 0 && mMinutes % 10 != 0) {
                mFrames = mDropped;
            }
        }
    }

    int mNominal;
    int mDropped;
    int mHours = 0;
    int mMinutes = 0;
    int mSeconds = 0;
    int mFrames = 0;
};

void ExpectDayCountsLikeTheClock(TimeDisplay inDisplay, Clock inClock)
{
    const auto rate = GetFrameRateForTimeDisplay(inDisplay, kNoRate);
    std::int64_t mismatches = 0;
    std::int64_t frame = 0;
    for (; inClock.mHours < 24; ++frame, inClock.Step()) {
        const TickTime time(frame, rate);
        int h, m, s, f;
        bool dropFrame = false;
        TimeToHMSF(h, m, s, f, dropFrame, time, kNoRate, inDisplay);
        const auto matches =
            h == inClock.mHours && m == inClock.mMinutes && s == inClock.mSeconds && f == inClock.mFrames;
        const auto text = Text(time, inDisplay);
        mismatches +=
            matches && dropFrame == (inClock.mDropped != 0) && Time(text, inDisplay) == time ? 0 : 1;
    }
    EXPECT_EQ(mismatches, 0);
    // A day of drop-frame counting is within its promised distance of the clock's day.
    if (inClock.mDropped != 0) {
        const auto day = 24 * 3600 * rate.GetFramesPerSecond();
        EXPECT_NEAR(static_cast<double>(frame), day, inClock.mDropped + 1);
    }
}

TEST(TimecodeTest, EveryFrameOfADayCountsLikeTheClockAndComesBackFromItsText)
{
    ExpectDayCountsLikeTheClock(TimeDisplayType::k2997Drop, {30, 2});
    ExpectDayCountsLikeTheClock(TimeDisplayType::k25, {25, 0});
}

TEST(TimecodeTest, DoubleRateDropFrameLeavesOutFourNumbers)
{
    const TimeDisplay display = TimeDisplayType::k5994Drop;
    for (auto [frame, text] :
         {std::pair(3599, "00;00;59;59"), std::pair(3600, "00;01;00;04"), std::pair(35963, "00;09;59;59"),
          std::pair(35964, "00;10;00;00"), std::pair(215784, "01;00;00;00")}) {
        EXPECT_EQ(Text(Frame(frame, display), display), text);
        EXPECT_EQ(Time(text, display), Frame(frame, display)) << text;
    }
}

TEST(TimecodeTest, EachDisplayHasItsRateAndText)
{
    struct Case
    {
        std::int32_t mNumber;
        std::int64_t mTicksPerFrame;
        const char* mOneHour;
    };
    for (const auto& [number, ticks, oneHour] :
         {Case{100, 10584000000, "01:00:00:00"}, Case{101, 10160640000, "01:00:00:00"},
          Case{102, 8475667200, "01;00;00;00"}, Case{103, 8475667200, "00:59:56:12"},
          Case{104, 8467200000, "01:00:00:00"}, Case{105, 5080320000, "01:00:00:00"},
          Case{106, 4237833600, "01;00;00;00"}, Case{107, 4237833600, "00:59:56:24"},
          Case{108, 4233600000, "01:00:00:00"}, Case{110, 10594584000, "00:59:56:09"},
          Case{201, 254016000, "01:00:00.000"}}) {
        const TimeDisplay display(number);
        EXPECT_EQ(display.GetNumber(), number);
        EXPECT_EQ(GetFrameRateForTimeDisplay(display, FrameRate(5292000)), FrameRate(ticks)) << number;
        // Drop-frame counting reaches the full hour 3.6 milliseconds early, within its frame.
        EXPECT_EQ(Text(TickTime(3600 * kTicksPerSecond), display), oneHour) << number;
    }
}

TEST(TimecodeTest, MillisecondsReadLikeAClock)
{
    const TimeDisplay display(201);
    EXPECT_EQ(Text(TickTime(62 * kTicksPerSecond + 345 * 254016000ll + 99), display), "00:01:02.345");
    EXPECT_EQ(Time("0:1:2.345", display), TickTime(62345, FrameRate(254016000)));
    EXPECT_EQ(Time("0:1:2.5", display), TickTime::NoTime());
    EXPECT_EQ(Time("0:1:2:5", display), TickTime(62005, FrameRate(254016000)));
}

TEST(TimecodeTest, NegativeTimesMirrorTheirFrameNumber)
{
    const TimeDisplay display = TimeDisplayType::k2997Drop;
    EXPECT_EQ(Text(TickTime(-1), display), "-00;00;00;01");
    EXPECT_EQ(Text(Frame(-1800, display), display), "-00;01;00;02");
    EXPECT_EQ(Time("-00;01;00;02", display), Frame(-1800, display));
    EXPECT_EQ(Time("-00:00:00:00", display), TickTime());
}

TEST(TimecodeTest, ADisplayWithoutRateCountsAtTheGivenRate)
{
    const FrameRate sampleRate(5292000);
    for (const TimeDisplay display : {TimeDisplay(), TimeDisplay(7)}) {
        EXPECT_EQ(GetFrameRateForTimeDisplay(display, sampleRate), sampleRate);
        const TickTime time(48000 * 3661ll + 7, sampleRate);
        EXPECT_EQ(TimeToTimecodeUTF8(time, sampleRate, display, 0), "01:01:01:00007");
        EXPECT_EQ(TimecodeToTime("01:01:01:00007", sampleRate, display, 0), time);
        EXPECT_EQ(Text(time, display), "");
        EXPECT_EQ(Time("00:00:00:00", display), TickTime::NoTime());
        int h = 1, m = 1, s = 1, f = 1;
        bool dropFrame = true;
        TimeToHMSF(h, m, s, f, dropFrame, time, kNoRate, display);
        EXPECT_TRUE(h == 0 && m == 0 && s == 0 && f == 0 && !dropFrame);
    }
}

TEST(TimecodeTest, ParserTakesWhatPeopleWrite)
{
    const TimeDisplay drop = TimeDisplayType::k2997Drop;
    const auto time = Frame(107892 + 1800, drop);
    for (const char* text :
         {"01;01;00;02", "01:01:00:02", "1:1:0:2", "01:01:00;02", "01:01:00.02", "01:01:00,02",
          // These two numbers are left out and mean the minute's first frame.
          "01;01;00;00", "01;01;00;01"}) {
        EXPECT_EQ(Time(text, drop), time) << text;
    }
    EXPECT_EQ(TimecodeToTime(u"01;01;00;02", kNoRate, drop, 0), time);
    EXPECT_EQ(TimecodeToTime(L"01;01;00;02", kNoRate, drop, 0), time);
    EXPECT_EQ(TimeToTimecode(time, kNoRate, drop, 0), u"01;01;00;02");
    EXPECT_EQ(Time("30:00:00:00", TimeDisplayType::k25), TickTime(30 * 3600 * kTicksPerSecond));
}

TEST(TimecodeTest, MalformedTextHasNoTime)
{
    for (const char* text : {"",
                             "-",
                             ":",
                             "::::",
                             "01:02:03",
                             "01:02:03:",
                             "01:02:03:04:",
                             "01:02:03:04:05",
                             "--1:2:3:4",
                             "+1:2:3:4",
                             " 1:2:3:4",
                             "1:2:3:4 ",
                             "1:2:3:-4",
                             "1:2:3.4",
                             "1.02:03:04",
                             "a:b:c:d",
                             "1:60:0:0",
                             "1:0:60:0",
                             "1:0:0:25",
                             "1:0:0:024",
                             "1:002:0:0",
                             "123456:0:0:0",
                             "1:2:3:\xC3"}) {
        EXPECT_EQ(Time(text, TimeDisplayType::k25), TickTime::NoTime()) << text;
    }
    EXPECT_EQ(TimecodeToTime(u"\u0661:2:3:4", kNoRate, TimeDisplayType::k25, 0), TickTime::NoTime());
    EXPECT_EQ(Text(TickTime::NoTime(), TimeDisplayType::k25), "");
}

TEST(TimecodeTest, TheEndsOfTheRangeHaveText)
{
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(Text(TickTime(most), TimeDisplayType::k25), "10086:10:01:01");
    for (std::int64_t ticks : {most, -most, std::numeric_limits<std::int64_t>::min()}) {
        for (const auto rate : {FrameRate(1), FrameRate(most - 1), FrameRate(kTicksPerSecond * 7)}) {
            EXPECT_NE(TimeToTimecodeUTF8(TickTime(ticks), rate, TimeDisplay(), 0), "");
        }
    }
    EXPECT_EQ(Time("99999:59:59:24", TimeDisplayType::k25), TickTime(most));
}

} // namespace
} // namespace kestrin
