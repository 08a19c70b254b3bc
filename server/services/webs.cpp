#include "server/services/webs.h"

#include "server/wire/http_text.h"

namespace trial {

Webs::Webs(const std::vector<std::string>& paths) : m_webs{{}} {
    for (std::string_view path : paths) {
        while (path.starts_with('/'))
            path.remove_prefix(1);
        while (path.ends_with('/'))
            path.remove_suffix(1);
        m_webs.push_back({std::string(path), FoldCase(path)});
    }
}

std::string_view Webs::DeepestAt(std::string_view path) const {
    const std::string key = FoldCase(path);
    const Web* deepest = &m_webs.front();
    for (const Web& web : m_webs) {
        const bool holds = key.starts_with(web.key) && (key.size() == web.key.size() || key[web.key.size()] == '/');
        if (holds && web.key.size() > deepest->key.size())
            deepest = &web;
    }
    return deepest->path;
}

bool Webs::IsWeb(std::string_view path) const { return FoldCase(DeepestAt(path)) == FoldCase(path); }

} // namespace trial
