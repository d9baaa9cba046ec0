#include <kestrin/Timecode.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>

#include "FrameCounting.h"

namespace kestrin {

namespace {

using details::FrameCounting;

constexpr int kFieldCount = 4;
constexpr int kHourDigits = 5;

/// Number, in a count that leaves none out, of the frame `inFrame` from 0 on.
std::int64_t AddDroppedNumbers(std::int64_t inFrame, const FrameCounting& inCounting)
{
    const std::int64_t dropped = inCounting.mDropped;
    const std::int64_t fullMinute = 60 * std::int64_t{inCounting.mNominal};
    const auto tenMinutes = 10 * fullMinute - 9 * dropped;
    const auto rest = inFrame % tenMinutes;
    const auto shortMinutes = rest < fullMinute ? 0 : (rest - fullMinute) / (fullMinute - dropped) + 1;
    return inFrame + dropped * (inFrame / tenMinutes * 9 + shortMinutes);
}

struct Digits
{
    std::int64_t mFields[kFieldCount] = {};
    bool mIsNegative = false;
};

Digits SplitTime(TickTime inTime, const FrameCounting& inCounting)
{
    Digits digits;
    if (inCounting.mNominal == 0) {
        return digits;
    }
    const auto frame = inTime.ToFrame64(inCounting.mRate);
    digits.mIsNegative = frame < 0;
    // The least frame number has no counterpart above 0; one frame less is as good as none so far out.
    auto number = frame < 0 ? -(frame + (frame == std::numeric_limits<std::int64_t>::min())) : frame;
    if (inCounting.mDropped != 0) {
        number = AddDroppedNumbers(number, inCounting);
    }
    const auto seconds = number / inCounting.mNominal;
    digits.mFields[0] = seconds / 3600;
    digits.mFields[1] = seconds / 60 % 60;
    digits.mFields[2] = seconds % 60;
    digits.mFields[3] = number % inCounting.mNominal;
    return digits;
}

int CountDigits(std::int64_t inValue)
{
    int count = 1;
    while ((inValue /= 10) != 0) {
        ++count;
    }
    return count;
}

int LastFieldWidth(const FrameCounting& inCounting)
{
    return std::max(2, CountDigits(inCounting.mNominal - 1));
}

template <typename String>
String MakeText(TickTime inTime, FrameRate inRate, TimeDisplay inDisplay)
{
    using Char = typename String::value_type;
    String text;
    const auto counting = details::GetFrameCounting(inDisplay, inRate);
    if (counting.mNominal == 0 || inTime.IsNoTime()) {
        return text;
    }
    const auto digits = SplitTime(inTime, counting);
    const auto separator = inDisplay.IsDropFrame() ? ';' : ':';
    const auto isDecimal = inDisplay.GetType() == TimeDisplayType::kMilliseconds;
    if (digits.mIsNegative) {
        text.push_back(Char{'-'});
    }
    for (int field = 0; field < kFieldCount; ++field) {
        const auto isLast = field == kFieldCount - 1;
        if (field != 0) {
            text.push_back(static_cast<Char>(isLast && isDecimal ? '.' : separator));
        }
        char buffer[20];
        const auto end = std::to_chars(std::begin(buffer), std::end(buffer), digits.mFields[field]).ptr;
        const auto width = isLast ? LastFieldWidth(counting) : 2;
        const auto length = static_cast<int>(end - buffer);
        text.append(static_cast<std::size_t>(std::max(width - length, 0)), Char{'0'});
        text.append(buffer, end);
    }
    return text;
}

/// Reads fields from the front of a text; any failure sticks.
template <typename Char>
class FieldReader
{
public:
    explicit FieldReader(std::basic_string_view<Char> inText) : mText(inText) {}

    bool Take(char inCharacter)
    {
        if (mText.empty() || mText.front() != static_cast<Char>(inCharacter)) {
            return false;
        }
        mText.remove_prefix(1);
        return true;
    }

    /// One to `inMostDigits` digits.
    bool TakeNumber(int inMostDigits, std::int64_t& outValue, int& outDigits)
    {
        outValue = 0;
        outDigits = 0;
        while (outDigits < inMostDigits && !mText.empty() && mText.front() >= Char{'0'} &&
               mText.front() <= Char{'9'}) {
            outValue = outValue * 10 + static_cast<std::int64_t>(mText.front() - Char{'0'});
            mText.remove_prefix(1);
            ++outDigits;
        }
        return outDigits > 0;
    }

    bool IsAtEnd() const { return mText.empty(); }

private:
    std::basic_string_view<Char> mText;
};

template <typename Char>
bool ParseDigits(std::basic_string_view<Char> inText, int inLastWidth, Digits& outDigits)
{
    FieldReader<Char> reader(inText);
    outDigits.mIsNegative = reader.Take('-');
    for (int field = 0; field < kFieldCount; ++field) {
        const auto isLast = field == kFieldCount - 1;
        auto isWhole = false;
        if (field != 0 && !reader.Take(':') && !reader.Take(';')) {
            isWhole = isLast && (reader.Take('.') || reader.Take(','));
            if (!isWhole) {
                return false;
            }
        }
        const auto mostDigits = isLast ? inLastWidth : field == 0 ? kHourDigits : 2;
        int digits = 0;
        if (!reader.TakeNumber(mostDigits, outDigits.mFields[field], digits) ||
            (isWhole && digits != mostDigits)) {
            return false;
        }
    }
    return reader.IsAtEnd();
}

std::int64_t JoinDigits(const Digits& inDigits, const FrameCounting& inCounting)
{
    const auto& [hours, minutes, seconds, frames] = inDigits.mFields;
    const auto minute = hours * 60 + minutes;
    auto number = (minute * 60 + seconds) * inCounting.mNominal + frames;
    if (minutes % 10 != 0 && seconds == 0 && frames < inCounting.mDropped) {
        number += inCounting.mDropped - frames;
    }
    number -= inCounting.mDropped * (minute - minute / 10);
    return inDigits.mIsNegative ? -number : number;
}

template <typename Char>
TickTime ParseText(std::basic_string_view<Char> inText, FrameRate inRate, TimeDisplay inDisplay)
{
    const auto counting = details::GetFrameCounting(inDisplay, inRate);
    Digits digits;
    if (counting.mNominal == 0 || !ParseDigits(inText, LastFieldWidth(counting), digits)) {
        return TickTime::NoTime();
    }
    const auto isInRange =
        digits.mFields[1] < 60 && digits.mFields[2] < 60 && digits.mFields[3] < counting.mNominal;
    return isInRange ? TickTime(JoinDigits(digits, counting), counting.mRate) : TickTime::NoTime();
}

} // namespace

void TimeToHMSF(int& outHours, int& outMinutes, int& outSeconds, int& outFrames, bool& outDropFrame,
                TickTime inTime, FrameRate inRate, TimeDisplay inDisplay)
{
    const auto digits = SplitTime(inTime, details::GetFrameCounting(inDisplay, inRate));
    outHours = static_cast<int>(digits.mFields[0]);
    outMinutes = static_cast<int>(digits.mFields[1]);
    outSeconds = static_cast<int>(digits.mFields[2]);
    outFrames = static_cast<int>(digits.mFields[3]);
    outDropFrame = inDisplay.IsDropFrame();
}

std::u16string TimeToTimecode(TickTime inTime, FrameRate inRate, TimeDisplay inDisplay, unsigned)
{
    return MakeText<std::u16string>(inTime, inRate, inDisplay);
}

std::string TimeToTimecodeUTF8(TickTime inTime, FrameRate inRate, TimeDisplay inDisplay, unsigned)
{
    return MakeText<std::string>(inTime, inRate, inDisplay);
}

TickTime TimecodeToTime(std::string_view inText, FrameRate inRate, TimeDisplay inDisplay, unsigned)
{
    return ParseText(inText, inRate, inDisplay);
}

TickTime TimecodeToTime(std::u16string_view inText, FrameRate inRate, TimeDisplay inDisplay, unsigned)
{
    return ParseText(inText, inRate, inDisplay);
}

TickTime TimecodeToTime(std::wstring_view inText, FrameRate inRate, TimeDisplay inDisplay, unsigned)
{
    return ParseText(inText, inRate, inDisplay);
}

} // namespace kestrin
