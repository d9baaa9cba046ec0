#include <ombrel/proplist/PropList.h>

#include <charconv>
#include <map>
#include <optional>
#include <vector>

#include <ombrel/utility/BinaryText.h>

#include "XmlText.h"

namespace ombrel::proplist {

namespace {

constexpr int kMostLevels = 64;
constexpr std::string_view kWhiteSpace = " \t\r\n";

bool DecodeBase64(const std::string& inText, std::string& outText)
{
    std::vector<unsigned char> bytes;
    const bool isGood = utility::DecodeBinaryDataFromUTF8String(inText, bytes);
    outText.assign(bytes.begin(), bytes.end());
    return isGood;
}

/// Reads exactly the elements that the writer writes. Every function returns false at the first thing that is
/// anything else, and the whole text is refused then.
class Reader
{
public:
    explicit Reader(std::string_view inText) : mRest(inText) {}

    bool ReadDocument(PropList& outList)
    {
        SkipWhiteSpace();
        Tag tag;
        if (!ReadTag(tag) || tag.mName != "proplist" || !tag.mAttributes.empty() || !ReadList(outList, 1)) {
            return false;
        }
        SkipWhiteSpace();
        return mRest.empty();
    }

private:
    struct Tag
    {
        std::string mName; // with a leading slash for an end tag
        std::map<std::string, std::string> mAttributes;

        std::optional<std::string> Take(const char* inName)
        {
            auto node = mAttributes.extract(inName);
            return node.empty() ? std::nullopt : std::optional(std::move(node.mapped()));
        }
    };

    bool Skip(std::string_view inText)
    {
        const bool isThere = mRest.substr(0, inText.size()) == inText;
        mRest.remove_prefix(isThere ? inText.size() : 0);
        return isThere;
    }

    void SkipWhiteSpace()
    {
        const auto end = mRest.find_first_not_of(kWhiteSpace);
        mRest.remove_prefix(end == std::string_view::npos ? mRest.size() : end);
    }

    std::string ReadWord()
    {
        constexpr std::string_view kLetters = "/abcdefghijklmnopqrstuvwxyz0123456789";
        const auto end = mRest.find_first_not_of(kLetters);
        std::string word(mRest.substr(0, end));
        mRest.remove_prefix(word.size());
        return word;
    }

    /// Reads text up to a character, which stays, and resolves the references in it.
    bool ReadText(char inEnd, std::string& outText)
    {
        static const std::pair<std::string_view, char> kReferences[] = {
            {"&amp;", '&'}, {"&lt;", '<'},   {"&gt;", '>'},  {"&quot;", '"'},
            {"&#9;", '\t'}, {"&#10;", '\n'}, {"&#13;", '\r'}};
        outText.clear();
        while (!mRest.empty() && mRest.front() != inEnd) {
            if (mRest.front() == '<') {
                return false;
            }
            if (mRest.front() != '&') {
                outText.push_back(mRest.front());
                mRest.remove_prefix(1);
                continue;
            }
            bool isKnown = false;
            for (const auto& [reference, character] : kReferences) {
                if (Skip(reference)) {
                    outText.push_back(character);
                    isKnown = true;
                    break;
                }
            }
            if (!isKnown) {
                return false;
            }
        }
        return !mRest.empty() && IsXmlText(outText);
    }

    bool ReadTag(Tag& outTag)
    {
        outTag.mAttributes.clear();
        if (!Skip("<")) {
            return false;
        }
        outTag.mName = ReadWord();
        for (;;) {
            SkipWhiteSpace();
            if (Skip(">")) {
                return true;
            }
            const std::string name = ReadWord();
            std::string value;
            if (name.empty() || !Skip("=\"") || !ReadText('"', value) || !Skip("\"") ||
                !outTag.mAttributes.emplace(name, value).second) {
                return false;
            }
        }
    }

    /// Takes the name of a property or sub-list off its tag; it must be a new one.
    static bool TakeName(Tag& ioTag, const PropList& inList, std::string& outName)
    {
        const auto plain = ioTag.Take("name");
        const auto encoded = ioTag.Take("name64");
        if (plain.has_value() == encoded.has_value()) {
            return false;
        }
        if (plain) {
            outName = *plain;
        } else if (!DecodeBase64(*encoded, outName)) {
            return false;
        }
        return inList.GetPropertyType(outName) == PropertyType::kNone;
    }

    /// Reads what follows the start tag of a list, its end tag included.
    bool ReadList(PropList& outList, int inLevel)
    {
        if (inLevel > kMostLevels) {
            return false;
        }
        for (;;) {
            SkipWhiteSpace();
            Tag tag;
            if (!ReadTag(tag)) {
                return false;
            }
            if (tag.mName == "/proplist") {
                return tag.mAttributes.empty();
            }
            std::string name;
            if (!TakeName(tag, outList, name)) {
                return false;
            }
            const bool isList = tag.mName == "proplist" && tag.mAttributes.empty();
            if (isList ? !ReadList(outList.NewSubList(name), inLevel + 1)
                       : !ReadProperty(tag, name, outList)) {
                return false;
            }
        }
    }

    bool ReadProperty(Tag& ioTag, const std::string& inName, PropList& ioList)
    {
        const PropertyType type = TypeOfName(ioTag.Take("type").value_or(""));
        const auto encoding = ioTag.Take("encoding");
        std::string text;
        if (ioTag.mName != "property" || !ioTag.mAttributes.empty() || !ReadText('<', text) ||
            !Skip("</property>")) {
            return false;
        }
        if (encoding &&
            (type != PropertyType::kString || *encoding != "base64" || !DecodeBase64(text, text))) {
            return false;
        }
        return SetFromText(type, inName, text, ioList);
    }

    template <typename T>
    static bool SetNumber(const std::string& inName, const std::string& inText, PropList& ioList)
    {
        T value{};
        const auto end = inText.data() + inText.size();
        const auto result = std::from_chars(inText.data(), end, value);
        if (result.ec != std::errc() || result.ptr != end) {
            return false;
        }
        ioList.SetValue(inName, value);
        return true;
    }

    static bool SetFromText(PropertyType inType, const std::string& inName, const std::string& inText,
                            PropList& ioList)
    {
        switch (inType) {
        case PropertyType::kBool:
            ioList.SetValue(inName, inText == "true");
            return inText == "true" || inText == "false";
        case PropertyType::kInt32:
            return SetNumber<std::int32_t>(inName, inText, ioList);
        case PropertyType::kUInt32:
            return SetNumber<std::uint32_t>(inName, inText, ioList);
        case PropertyType::kInt64:
            return SetNumber<std::int64_t>(inName, inText, ioList);
        case PropertyType::kUInt64:
            return SetNumber<std::uint64_t>(inName, inText, ioList);
        case PropertyType::kFloat:
            return SetNumber<float>(inName, inText, ioList);
        case PropertyType::kDouble:
            return SetNumber<double>(inName, inText, ioList);
        case PropertyType::kString:
            ioList.SetValue(inName, std::string_view(inText));
            return true;
        default:
            return false;
        }
    }

    std::string_view mRest;
};

} // namespace

bool PropList::InputFromXMLFragment(std::string_view inText)
{
    const std::string copy(inText); // it may be held by a property of this list
    Clear();
    if (!Reader(copy).ReadDocument(*this)) {
        Clear();
        return false;
    }
    return true;
}

} // namespace ombrel::proplist
