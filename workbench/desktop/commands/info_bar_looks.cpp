#include "workbench/desktop/commands/info_bar_looks.h"

#include "workbench/desktop/objects/images.h"
#include "workbench/desktop/objects/text.h"

std::function<InfoBarLook(DWORD)> RegisteredLooks(Host& host) {
    return [&host](DWORD kind) {
        for (const InfoBarKind& registered : host.InfoBars()) {
            DWORD id = 0;
            if (SUCCEEDED(host.Str2ID(registered.name.c_str(), VARIANT_FALSE, &id)) && id == kind) {
                return InfoBarLook{Resolved(host, registered.title.c_str()), Resolved(host, registered.description.c_str()),
                                   ColorOf(registered.color), IconOf(registered.icon)};
            }
        }
        return InfoBarLook{};
    };
}
