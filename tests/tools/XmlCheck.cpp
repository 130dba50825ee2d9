#include "tools/XmlCheck.h"

#include <cctype>
#include <vector>

namespace zebreader81::test {

namespace {

bool nameChar(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-' || c == ':' || c == '.';
}

// Checks entity references in text or an attribute value.
std::string checkText(const std::string& text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '<')
            return "'<' inside text or attribute";
        if (text[i] != '&')
            continue;
        const auto end = text.find(';', i);
        if (end == std::string::npos)
            return "unterminated entity";
        const std::string ent = text.substr(i + 1, end - i - 1);
        const bool numeric = ent.size() > 1 && ent[0] == '#';
        if (!numeric && ent != "amp" && ent != "lt" && ent != "gt" && ent != "quot" && ent != "apos")
            return "unknown entity &" + ent + ";";
        i = end;
    }
    return {};
}

} // namespace

std::string xmlProblem(const std::string& doc)
{
    std::vector<std::string> open;
    int roots = 0;
    std::size_t i = 0;
    if (doc.compare(0, 5, "<?xml") == 0) {
        i = doc.find("?>");
        if (i == std::string::npos)
            return "unterminated declaration";
        i += 2;
    }
    while (i < doc.size()) {
        const auto lt = doc.find('<', i);
        const std::string text = doc.substr(i, lt == std::string::npos ? std::string::npos : lt - i);
        if (open.empty() && text.find_first_not_of(" \t\r\n") != std::string::npos)
            return "text outside the root element";
        if (auto p = checkText(text); !p.empty())
            return p;
        if (lt == std::string::npos)
            break;
        if (doc.compare(lt, 4, "<!--") == 0) {
            const auto end = doc.find("-->", lt);
            if (end == std::string::npos)
                return "unterminated comment";
            i = end + 3;
            continue;
        }
        const auto gt = doc.find('>', lt);
        if (gt == std::string::npos)
            return "unterminated tag";
        std::string tag = doc.substr(lt + 1, gt - lt - 1);
        if (!tag.empty() && tag[0] == '/') {
            const std::string name = tag.substr(1);
            if (open.empty() || open.back() != name)
                return "closing </" + name + "> does not match";
            open.pop_back();
            i = gt + 1;
            continue;
        }
        const bool selfClosing = !tag.empty() && tag.back() == '/';
        if (selfClosing)
            tag.pop_back();
        std::size_t k = 0;
        while (k < tag.size() && nameChar(tag[k]))
            ++k;
        const std::string name = tag.substr(0, k);
        if (name.empty())
            return "tag without a name";
        // Attributes: name="value" or name='value', separated by blanks.
        while (k < tag.size()) {
            while (k < tag.size() && std::isspace(static_cast<unsigned char>(tag[k])))
                ++k;
            if (k == tag.size())
                break;
            const auto start = k;
            while (k < tag.size() && nameChar(tag[k]))
                ++k;
            if (k == start || k + 1 >= tag.size() || tag[k] != '=' ||
                (tag[k + 1] != '"' && tag[k + 1] != '\''))
                return "bad attribute in <" + name + ">";
            const char quote = tag[k + 1];
            const auto close = tag.find(quote, k + 2);
            if (close == std::string::npos)
                return "unterminated attribute in <" + name + ">";
            if (auto p = checkText(tag.substr(k + 2, close - k - 2)); !p.empty())
                return p;
            k = close + 1;
        }
        if (open.empty() && ++roots > 1)
            return "more than one root element";
        if (!selfClosing)
            open.push_back(name);
        i = gt + 1;
    }
    if (!open.empty())
        return "<" + open.back() + "> is not closed";
    return roots == 1 ? std::string{} : "no root element";
}

} // namespace zebreader81::test
