// The webs of the server: the root, and the paths that were declared as one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace trial {

class Webs {
public:
    /// Paths with or without slashes at their ends; the root needn't be among them.
    explicit Webs(const std::vector<std::string>& paths);
    /// The path of the deepest web that holds `path`, also for what doesn't exist; empty for the root.
    std::string_view DeepestAt(std::string_view path) const;
    bool IsWeb(std::string_view path) const;

private:
    struct Web {
        std::string path;
        std::string key;
    };
    std::vector<Web> m_webs;
};

} // namespace trial
