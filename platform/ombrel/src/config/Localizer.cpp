#include <ombrel/config/Localizer.h>

#include <memory>
#include <mutex>
#include <utility>

#include <ombrel/string/Unicode.h>

namespace ombrel::config {

namespace {

constexpr std::string_view kKeyBeginning = "$$$/";

struct LocalizerState
{
    std::mutex mMutex;
    std::shared_ptr<const Localizer::Translator> mTranslator;
};

/// Never destroyed: texts are asked for until the end of the program.
LocalizerState& GetState()
{
    static auto& instance = *new LocalizerState;
    return instance;
}

std::shared_ptr<const Localizer::Translator> GetTranslator()
{
    auto& state = GetState();
    const std::lock_guard lock(state.mMutex);
    return state.mTranslator;
}

} // namespace

UTF16String Localizer::Get(std::string_view inKey)
{
    const auto separator = inKey.find('=');
    if (!inKey.starts_with(kKeyBeginning) || separator == std::string_view::npos) {
        return string::Std8ToUTF16String(inKey);
    }
    const auto path = inKey.substr(kKeyBeginning.size(), separator - kKeyBeginning.size());
    UTF16String text;
    if (const auto translator = GetTranslator(); translator != nullptr && (*translator)(path, text)) {
        return text;
    }
    return string::Std8ToUTF16String(inKey.substr(separator + 1));
}

void Localizer::SetTranslator(Translator inTranslator)
{
    auto translator = inTranslator ? std::make_shared<const Translator>(std::move(inTranslator)) : nullptr;
    auto& state = GetState();
    const std::lock_guard lock(state.mMutex);
    state.mTranslator.swap(translator);
}

void Localizer::SetTranslations(std::map<std::string, UTF16String, std::less<>> inTable)
{
    SetTranslator([table = std::move(inTable)](std::string_view inPath, UTF16String& outText) {
        const auto found = table.find(inPath);
        if (found == table.end()) {
            return false;
        }
        outText = found->second;
        return true;
    });
}

} // namespace ombrel::config
