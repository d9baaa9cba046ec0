#include <ombrel/proplist/PropList.h>

#include <array>
#include <charconv>

#include <ombrel/utility/BinaryText.h>

#include "XmlText.h"

namespace ombrel::proplist {

namespace {

void AppendEscaped(std::string_view inText, std::string& ioXml)
{
    for (char character : inText) {
        switch (character) {
        case '&':
            ioXml += "&amp;";
            break;
        case '<':
            ioXml += "&lt;";
            break;
        case '>':
            ioXml += "&gt;";
            break;
        case '"':
            ioXml += "&quot;";
            break;
        // White space that a reader of XML would otherwise normalise.
        case '\t':
            ioXml += "&#9;";
            break;
        case '\n':
            ioXml += "&#10;";
            break;
        case '\r':
            ioXml += "&#13;";
            break;
        default:
            ioXml.push_back(character);
        }
    }
}

void AppendName(std::string_view inName, std::string& ioXml)
{
    if (IsXmlText(inName)) {
        ioXml += " name=\"";
        AppendEscaped(inName, ioXml);
    } else {
        ioXml += " name64=\"" + utility::EncodeBinaryDataToUTF8String(inName.data(), inName.size());
    }
    ioXml += "\"";
}

template <typename T>
void AppendNumber(const PropList& inList, const std::string& inName, std::string& ioXml)
{
    T value{};
    inList.GetValue(inName, value);
    std::array<char, 64> text;
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value);
    ioXml.append(text.data(), result.ptr);
}

void AppendValue(const PropList& inList, const std::string& inName, PropertyType inType, std::string& ioXml)
{
    switch (inType) {
    case PropertyType::kBool: {
        bool value = false;
        inList.GetValue(inName, value);
        ioXml += value ? "true" : "false";
        break;
    }
    case PropertyType::kInt32:
        return AppendNumber<std::int32_t>(inList, inName, ioXml);
    case PropertyType::kUInt32:
        return AppendNumber<std::uint32_t>(inList, inName, ioXml);
    case PropertyType::kInt64:
        return AppendNumber<std::int64_t>(inList, inName, ioXml);
    case PropertyType::kUInt64:
        return AppendNumber<std::uint64_t>(inList, inName, ioXml);
    case PropertyType::kFloat:
        return AppendNumber<float>(inList, inName, ioXml);
    case PropertyType::kDouble:
        return AppendNumber<double>(inList, inName, ioXml);
    default:
        break;
    }
}

void AppendProperty(const PropList& inList, const std::string& inName, std::string& ioXml)
{
    const PropertyType type = inList.GetPropertyType(inName);
    ioXml += "<property";
    AppendName(inName, ioXml);
    ioXml += " type=\"" + std::string(NameOfType(type)) + "\"";
    std::string text;
    if (inList.GetValue(inName, text)) {
        const bool isPlain = IsXmlText(text);
        ioXml += isPlain ? ">" : " encoding=\"base64\">";
        AppendEscaped(isPlain ? text : utility::EncodeBinaryDataToUTF8String(text.data(), text.size()),
                      ioXml);
    } else {
        ioXml += ">";
        AppendValue(inList, inName, type, ioXml);
    }
    ioXml += "</property>\n";
}

void AppendList(const PropList& inList, const std::string* inName, std::size_t inLevel, std::string& ioXml)
{
    const std::string indent(2 * inLevel, ' ');
    ioXml += indent + "<proplist";
    if (inName) {
        AppendName(*inName, ioXml);
    }
    ioXml += ">\n";
    for (const auto& name : inList.GetPropertyNames()) {
        if (const auto* list = inList.GetSubList(name)) {
            AppendList(*list, &name, inLevel + 1, ioXml);
        } else {
            ioXml += indent + "  ";
            AppendProperty(inList, name, ioXml);
        }
    }
    ioXml += indent + "</proplist>\n";
}

} // namespace

std::string PropList::OutputAsXMLFragment() const
{
    std::string xml;
    AppendList(*this, nullptr, 0, xml);
    return xml;
}

} // namespace ombrel::proplist
