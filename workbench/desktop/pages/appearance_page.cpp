#include "workbench/desktop/pages/appearance_page.h"

#include <QButtonGroup>
#include <QGroupBox>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {

constexpr int gap = 12;

struct Choice {
    const char* name;
    const char* label;
    int value;
};

constexpr Choice command_choices[] = {
    {"appearance.menu", "&Menus and a tool bar", 0},
    {"appearance.ribbon", "&Ribbon", 1},
};
constexpr Choice color_choices[] = {
    {"appearance.desktop", "As the &desktop", static_cast<int>(ColorScheme::desktop)},
    {"appearance.light", "&Light", static_cast<int>(ColorScheme::light)},
    {"appearance.dark", "Dar&k", static_cast<int>(ColorScheme::dark)},
};

template <std::size_t Count>
QButtonGroup* AddChoices(QVBoxLayout& rows, const QString& title, const Choice (&choices)[Count], int chosen) {
    auto* const box = new QGroupBox(title);
    auto* const lines = new QVBoxLayout(box);
    auto* const group = new QButtonGroup(box);
    for (const Choice& choice : choices) {
        auto* const radio = new QRadioButton(choice.label, box);
        radio->setObjectName(choice.name);
        radio->setChecked(choice.value == chosen);
        group->addButton(radio, choice.value);
        lines->addWidget(radio);
    }
    rows.addWidget(box);
    return group;
}

} // namespace

AppearancePage::AppearancePage(const Appearance& shown) {
    auto* const rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(gap);
    m_commands = AddChoices(*rows, "Commands", command_choices, shown.has_ribbon ? 1 : 0);
    m_colors = AddChoices(*rows, "Colours", color_choices, static_cast<int>(shown.colors));
    rows->addStretch(1);
}

Appearance AppearancePage::Chosen() const {
    return {m_commands->checkedId() == 1, static_cast<ColorScheme>(m_colors->checkedId())};
}
