#include "play/ControlFile.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "HostError.h"
#include "OptionText.h"

namespace host {

namespace {

constexpr const char* kBlanks = " \t\r";
constexpr double kLatest = 1e6;      // seconds
constexpr double kFarthest = 1000.0; // position

/// Takes one word after the other from a line, and knows where they stand.
class LineReader
{
public:
    LineReader(std::string inPath, std::size_t inLine, std::string_view inText)
        : mPath(std::move(inPath)), mLine(inLine), mText(inText)
    {
        Skip();
    }

    bool IsAtEnd() const { return mNext == mText.size(); }

    std::string_view TakeWord(const char* inWhat)
    {
        mWord = mNext;
        if (IsAtEnd()) {
            Fail(std::string(inWhat) + " is missing");
        }
        const auto end = std::min(mText.find_first_of(kBlanks, mNext), mText.size());
        const auto word = mText.substr(mNext, end - mNext);
        mNext = end;
        Skip();
        return word;
    }

    double TakeNumber(const char* inWhat, double inHigh)
    {
        const auto word = TakeWord(inWhat);
        const auto number = ReadNumber(word);
        if (!number || *number < 0.0 || *number > inHigh) {
            Fail("'" + std::string(word) + "' is not " + inWhat + " from 0 to " + ShortenNumber(inHigh));
        }
        return *number;
    }

    std::size_t TakePosition()
    {
        const double number = TakeNumber("a position in the chain", kFarthest);
        if (number < 1.0 || number != std::floor(number)) {
            Fail("a position is a whole number, 1 for the first effect");
        }
        return static_cast<std::size_t>(number);
    }

    std::string TakeRest(const char* inWhat)
    {
        mWord = mNext;
        if (IsAtEnd()) {
            Fail(std::string(inWhat) + " is missing");
        }
        const auto end = mText.find_last_not_of(kBlanks) + 1;
        const auto rest = mText.substr(mNext, end - mNext);
        mNext = mText.size();
        return std::string(rest);
    }

    void ExpectEnd()
    {
        mWord = mNext;
        if (!IsAtEnd()) {
            Fail("there is something behind the end of the command");
        }
    }

    /// About the last word that was taken.
    [[noreturn]] void Fail(const std::string& inReason) const
    {
        throw FileError(GetPlace() + ":" + std::to_string(mWord + 1),
                        inReason + "; write, for example, 0.5 set 1 gain=-6");
    }

    std::string GetPlace() const { return mPath + ":" + std::to_string(mLine); }

private:
    void Skip() { mNext = std::min(mText.find_first_not_of(kBlanks, mNext), mText.size()); }

    std::string mPath;
    std::size_t mLine;
    std::string_view mText;
    std::size_t mNext = 0;
    std::size_t mWord = 0;
};

ControlEvent ReadEvent(LineReader& ioLine)
{
    ControlEvent event;
    event.mPlace = ioLine.GetPlace();
    event.mSeconds = ioLine.TakeNumber("a time in seconds", kLatest);
    const auto action = ioLine.TakeWord("set, insert, remove or mode");
    if (action == "set" || action == "insert") {
        event.mAction = action == "set" ? ControlEvent::Action::kSet : ControlEvent::Action::kInsert;
        event.mPosition = ioLine.TakePosition();
        event.mText = ioLine.TakeRest(action == "set" ? "PARAMETER=VALUE" : "an effect");
    } else if (action == "remove") {
        event.mAction = ControlEvent::Action::kRemove;
        event.mPosition = ioLine.TakePosition();
    } else if (action == "mode") {
        event.mText = ioLine.TakeWord("bypass or process");
        if (event.mText != kModeBypass && event.mText != kModeProcess) {
            ioLine.Fail("'" + event.mText + "' is not bypass or process");
        }
    } else {
        ioLine.Fail("'" + std::string(action) + "' is not set, insert, remove or mode");
    }
    ioLine.ExpectEnd();
    return event;
}

} // namespace

std::vector<ControlEvent> ParseControl(const std::string& inPath, std::string_view inText)
{
    std::vector<ControlEvent> events;
    std::size_t number = 0;
    for (const auto text : SplitText(inText, '\n')) {
        LineReader line(inPath, ++number, text);
        if (!line.IsAtEnd() && text[text.find_first_not_of(kBlanks)] != '#') {
            events.push_back(ReadEvent(line));
        }
    }
    std::stable_sort(events.begin(), events.end(),
                     [](const ControlEvent& inLeft, const ControlEvent& inRight) {
                         return inLeft.mSeconds < inRight.mSeconds;
                     });
    return events;
}

std::vector<ControlEvent> ReadControlFile(const std::string& inPath)
{
    if (std::filesystem::is_directory(inPath)) {
        throw FileError(inPath, "is a directory; name a control file");
    }
    errno = 0;
    std::ifstream file(inPath, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open() || errno != 0) {
        throw FileError(inPath, std::string("cannot be read: ") + std::strerror(errno));
    }
    return ParseControl(inPath, text);
}

} // namespace host
