#include "registry/Hive.h"

#include <cctype>

namespace zebreader81::registry {

namespace {

std::vector<std::string_view> components(std::string_view path)
{
    std::vector<std::string_view> parts;
    size_t start = 0;
    while (start <= path.size()) {
        auto end = path.find('\\', start);
        if (end == std::string_view::npos)
            end = path.size();
        if (end > start)
            parts.push_back(path.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::string join(const std::vector<std::string_view>& parts, size_t count)
{
    std::string out;
    for (size_t i = 0; i < count; ++i) {
        if (i)
            out += '\\';
        out += parts[i];
    }
    return out;
}

// Index of a path: lower case, separators as \x01 so that a key sorts right before its sub-keys.
std::string indexOf(std::string_view path)
{
    std::string out;
    for (char c : path)
        out += c == '\\' ? '\x01' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

std::string lowerName(std::string_view name)
{
    std::string out(name);
    for (char& c : out)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

std::string canonical(std::string_view subKey)
{
    const auto parts = components(subKey);
    return join(parts, parts.size());
}

} // namespace

std::optional<std::pair<Root, std::string>> splitKeyName(std::string_view fullName)
{
    const auto sep = fullName.find('\\');
    const auto root = rootFromName(fullName.substr(0, sep));
    if (!root)
        return std::nullopt;
    return std::pair{*root,
                     sep == std::string_view::npos ? std::string() : canonical(fullName.substr(sep + 1))};
}

const Value* Hive::Key::find(std::string_view name) const
{
    const auto it = index_.find(lowerName(name));
    return it == index_.end() ? nullptr : &values[it->second].second;
}

bool Hive::Key::set(std::string_view name, const Value& value)
{
    const auto [it, inserted] = index_.try_emplace(lowerName(name), values.size());
    if (inserted) {
        values.emplace_back(std::string(name), value);
        return true;
    }
    Value& current = values[it->second].second;
    if (current == value)
        return false;
    current = value;
    return true;
}

bool Hive::Key::erase(std::string_view name)
{
    const auto it = index_.find(lowerName(name));
    if (it == index_.end())
        return false;
    const size_t pos = it->second;
    index_.erase(it);
    values.erase(values.begin() + static_cast<std::ptrdiff_t>(pos));
    for (auto& [n, p] : index_)
        if (p > pos)
            --p;
    return true;
}

Hive::Hive() { keys_.emplace(std::string(), Key{}); }

const Hive::Key* Hive::find(std::string_view subKey) const
{
    const auto it = keys_.find(indexOf(canonical(subKey)));
    return it == keys_.end() ? nullptr : &it->second;
}

Hive::Key* Hive::find(std::string_view subKey) { return const_cast<Key*>(std::as_const(*this).find(subKey)); }

Hive::Key& Hive::create(std::string_view subKey, bool* created)
{
    const auto parts = components(subKey);
    if (created)
        *created = false;
    Key* key = &keys_.at(std::string());
    for (size_t n = 1; n <= parts.size(); ++n) {
        const std::string path = join(parts, n);
        auto [it, inserted] = keys_.try_emplace(indexOf(path));
        if (inserted) {
            it->second.path = path;
            if (created)
                *created = true;
        }
        key = &it->second;
    }
    return *key;
}

bool Hive::removeTree(std::string_view subKey)
{
    const std::string index = indexOf(canonical(subKey));
    if (index.empty() || !keys_.contains(index))
        return false;
    const std::string below = index + '\x01';
    for (auto it = keys_.lower_bound(index); it != keys_.end();) {
        if (it->first == index || it->first.starts_with(below))
            it = keys_.erase(it);
        else
            break;
    }
    return true;
}

std::vector<std::string> Hive::subKeys(std::string_view subKey) const
{
    std::vector<std::string> out;
    const std::string index = indexOf(canonical(subKey));
    const std::string below = index.empty() ? std::string() : index + '\x01';
    for (auto it = keys_.upper_bound(index); it != keys_.end() && it->first.starts_with(below); ++it) {
        const std::string_view rest = std::string_view(it->first).substr(below.size());
        if (rest.find('\x01') == std::string_view::npos)
            out.push_back(it->second.path.substr(it->second.path.size() - rest.size()));
    }
    return out;
}

std::optional<RegParseError> Hive::apply(const RegDocument& doc, Root root, RegDocument* others)
{
    for (const auto& section : doc.sections) {
        const auto split = splitKeyName(section.key);
        if (!split)
            return RegParseError{section.line,
                                 "the key [" + section.key + "] does not start with a known root"};
        if (split->first != root) {
            if (!others)
                return RegParseError{section.line, "the key [" + section.key + "] is not under " +
                                                       std::string(rootName(root))};
            others->sections.push_back(section);
            continue;
        }
        if (section.remove) {
            removeTree(split->second);
            continue;
        }
        Key& key = create(split->second);
        for (const auto& e : section.entries) {
            if (e.remove)
                key.erase(e.name);
            else
                key.set(e.name, e.value);
        }
    }
    return std::nullopt;
}

RegDocument Hive::toDocument(Root root, std::string_view subKey) const
{
    RegDocument doc;
    const std::string index = indexOf(canonical(subKey));
    const std::string below = index.empty() ? std::string() : index + '\x01';
    for (auto it = keys_.lower_bound(index); it != keys_.end(); ++it) {
        if (it->first != index && !it->first.starts_with(below))
            break;
        const Key& key = it->second;
        if (key.path.empty() && key.values.empty())
            continue;
        RegSection section;
        section.key = std::string(rootName(root)) + (key.path.empty() ? "" : "\\" + key.path);
        for (const auto& [name, value] : key.values)
            section.entries.push_back({name, false, value});
        doc.sections.push_back(std::move(section));
    }
    return doc;
}

} // namespace zebreader81::registry
