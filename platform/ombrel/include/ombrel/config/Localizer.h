#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include <ombrel/Export.h>
#include <ombrel/string/StringTypes.h>

namespace ombrel::config {

/// Turns the keys of texts into texts of the user's language.
///
/// A key is written "$$$/path/of/the/text=default text": the part between "$$$/" and the first "=" names the
/// text, the part behind it is what the user sees where the host has no translation. A key without the
/// beginning or without the "=" is taken as the text itself.
class OMBREL_EXPORT Localizer
{
public:
    Localizer() = delete;

    /// The text of a key (UTF-8, see above). Takes a lock. [any thread]
    [[nodiscard]] static UTF16String Get(std::string_view inKey);

    /// Gives the translation of the text that the path names ("path/of/the/text") and returns true, or
    /// returns false.
    using Translator = std::function<bool(std::string_view inPath, UTF16String& outText)>;

    /// Installs the host's translation; an empty function takes it away. It is called on any thread, several
    /// at once, and may still be running for a moment after it was replaced. [any thread]
    static void SetTranslator(Translator inTranslator);
    /// Installs a table from path to text. [any thread]
    static void SetTranslations(std::map<std::string, UTF16String, std::less<>> inTable);
};

} // namespace ombrel::config
