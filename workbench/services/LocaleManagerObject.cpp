#include "services/LocaleManagerObject.h"

#include "service-common/UnicodeText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <mutex>
#include <stdexcept>
#include <unordered_set>
#include <utility>

namespace Workbench {

namespace {

// Modules keep what they were given for as long as the process lives, so no text is ever freed.
const char16_t* KeepForever(std::string_view utf8)
{
    static std::mutex& mutex = *std::make_unique<std::mutex>().release();
    static auto& texts = *std::make_unique<std::unordered_set<std::u16string>>().release();
    const std::lock_guard lock(mutex);
    return texts.insert(UnicodeText::ToUtf16(utf8)).first->c_str();
}

// The name becomes part of a path, so it must be nothing but a name.
bool IsPlainName(const std::string& language)
{
    return !language.empty() && std::all_of(language.begin(), language.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '-' || c == '_';
    });
}

}  // namespace

LocaleManagerObject::LocaleManagerObject(std::filesystem::path folder) : folder_(std::move(folder))
{
    Offer<LocaleManager::GetString, &LocaleManagerObject::GetString>();
    Offer<LocaleManager::GetSectionString, &LocaleManagerObject::GetSectionString>();
}

std::vector<std::string> LocaleManagerObject::Languages() const
{
    std::vector<std::string> languages;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder_, error)) {
        if (entry.path().extension() == ".json") {
            languages.push_back(entry.path().stem().string());
        }
    }
    std::sort(languages.begin(), languages.end());
    return languages;
}

LocaleManagerObject::Contents LocaleManagerObject::Read(const std::filesystem::path& file,
                                                        const std::string& language)
{
    std::ifstream stream(file, std::ios::binary);
    const nlohmann::json json = nlohmann::json::parse(stream);
    const auto readTexts = [](const nlohmann::json& object) {
        Texts texts;
        for (const auto& [key, value] : object.items()) {
            texts.emplace(UnicodeText::ToUtf16(key),
                          KeepForever(value.get_ref<const std::string&>()));
        }
        return texts;
    };
    Contents contents;
    contents.language = language;
    contents.isRightToLeft = json.at("direction").get_ref<const std::string&>() == "rtl";
    contents.strings = readTexts(json.at("strings"));
    for (const auto& [section, texts] : json.at("sections").items()) {
        contents.sections.emplace(UnicodeText::ToUtf16(section), readTexts(texts));
    }
    return contents;
}

void LocaleManagerObject::SwitchTo(const std::string& language)
{
    const std::filesystem::path file = folder_ / (language + ".json");
    std::error_code error;
    if (!IsPlainName(language) || !std::filesystem::is_regular_file(file, error)) {
        std::string known;
        for (const std::string& name : Languages()) {
            known += (known.empty() ? "" : ", ") + name;
        }
        throw std::runtime_error("there is no locale \"" + language + "\" in " + folder_.string() +
                                 (known.empty() ? "" : ", only " + known));
    }
    Contents contents;
    try {
        contents = Read(file, language);
    } catch (const std::exception& exception) {
        throw std::runtime_error(file.string() + ": " + exception.what());
    }
    const std::lock_guard lock(mutex_);
    std::swap(contents_, contents);
}

std::string LocaleManagerObject::Language() const
{
    const std::shared_lock lock(mutex_);
    return contents_.language;
}

bool LocaleManagerObject::IsRightToLeft() const
{
    const std::shared_lock lock(mutex_);
    return contents_.isRightToLeft;
}

const char16_t* LocaleManagerObject::FindIn(const Texts& texts, std::u16string_view key) noexcept
{
    const auto found = texts.find(key);
    return found == texts.end() ? nullptr : found->second;
}

const char16_t* LocaleManagerObject::Find(std::u16string_view key) const
{
    const std::shared_lock lock(mutex_);
    return FindIn(contents_.strings, key);
}

ResultCode LocaleManagerObject::GetString(const char16_t** text, const char16_t* key) const
{
    if (text == nullptr) {
        return kResultNullArgument;
    }
    *text = nullptr;
    if (key == nullptr) {
        return kResultNullArgument;
    }
    *text = Find(key);
    return kResultOk;
}

ResultCode LocaleManagerObject::GetSectionString(const char16_t** text, const char16_t* section,
                                                 const char16_t* key) const
{
    if (text == nullptr) {
        return kResultNullArgument;
    }
    *text = nullptr;
    if (section == nullptr || key == nullptr) {
        return kResultNullArgument;
    }
    const std::shared_lock lock(mutex_);
    const auto found = contents_.sections.find(std::u16string_view(section));
    if (found != contents_.sections.end()) {
        *text = FindIn(found->second, key);
    }
    return kResultOk;
}

}  // namespace Workbench
