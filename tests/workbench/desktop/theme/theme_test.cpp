#include <algorithm>
#include <cmath>
#include <memory>

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QPainter>
#include <QPalette>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSet>
#include <QSpinBox>

#include "workbench/desktop/theme/color_scheme.h"
#include "workbench/desktop/theme/icons.h"

namespace {

QImage PictureOf(const QIcon& icon, int side, qreal scale = 1, QIcon::Mode mode = QIcon::Normal) {
    return icon.pixmap(QSize(side, side), scale, mode).toImage().convertToFormat(QImage::Format_ARGB32);
}

int VisiblePixels(const QImage& picture) {
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            count += qAlpha(picture.pixel(x, y)) > 0 ? 1 : 0;
        }
    }
    return count;
}

qint64 Ink(const QImage& picture) {
    qint64 sum = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            sum += qAlpha(picture.pixel(x, y));
        }
    }
    return sum;
}

class Theme : public testing::Test {
protected:
    void SetUp() override { Apply(ColorScheme::light); }
    static void Apply(ColorScheme scheme) { ApplyColorScheme(*static_cast<QApplication*>(qApp), scheme); }
};

TEST_F(Theme, HasEveryIconThatTheModuleAndTheHostAskForAndNoOther) {
    const char* const names[] = {"cmd.openFromURL",
                                 "cmd.openSrcFolder",
                                 "ico.folder",
                                 "ico.folder.opened",
                                 "ico.folder.add",
                                 "ico.delete",
                                 "ico.collection.moveUp",
                                 "ico.logFile",
                                 "ico.logFile.remove",
                                 "sp.cmd.checkOut",
                                 "sp.cmd.checkIn",
                                 "sp.cmd.discardCheckOut",
                                 "sp.cmd.enableEditing",
                                 "open",
                                 "save",
                                 "saveAs",
                                 "undo",
                                 "redo",
                                 "rotate",
                                 "deletePage",
                                 "note",
                                 "zoomIn",
                                 "zoomOut",
                                 "pageUp",
                                 "pageDown",
                                 "settings",
                                 "places",
                                 "close",
                                 "info",
                                 "question",
                                 "error",
                                 "warning"};
    for (const char* const name : names) {
        EXPECT_FALSE(GetIcon(name).isNull()) << name;
    }
    EXPECT_GE(IconNames().size(), qsizetype{std::size(names)});
    for (const char* const name : {"", "sp.cmd.share_point", "ico", "../theme", "icons/save"}) {
        EXPECT_TRUE(GetIcon(name).isNull()) << name;
    }
}

TEST_F(Theme, DrawsEachIconAtBothScalesInsideItsFrameInLightAndDark) {
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
        Apply(scheme);
        for (const QString& name : IconNames()) {
            const QImage once = PictureOf(GetIcon(name), 16);
            const QImage twice = PictureOf(GetIcon(name), 16, 2);
            EXPECT_EQ(once.size(), QSize(16, 16)) << name.toStdString();
            EXPECT_EQ(twice.size(), QSize(32, 32)) << name.toStdString();
            EXPECT_GT(VisiblePixels(once), 20) << name.toStdString();
            EXPECT_GT(VisiblePixels(twice), 2 * VisiblePixels(once)) << name.toStdString();
        }
    }
}

TEST_F(Theme, EveryColorOfAnIconHasOneForDarkWindows) {
    const QRegularExpression color("#[0-9a-fA-F]{3,8}");
    Apply(ColorScheme::light);
    QMap<QString, QImage> in_light;
    for (const QString& name : IconNames()) {
        in_light[name] = PictureOf(GetIcon(name), 16);
    }
    Apply(ColorScheme::dark);
    for (const QString& name : IconNames()) {
        const QImage in_dark = PictureOf(GetIcon(name), 16);
        QFile file(":/theme/icons/" + name + ".svg");
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        QSet<QRgb> light_colors;
        for (auto matches = color.globalMatch(file.readAll()); matches.hasNext();) {
            light_colors.insert(QColor(matches.next().captured()).rgb());
        }
        for (int y = 0; y < 16; ++y) {
            for (int x = 0; x < 16; ++x) {
                const QRgb pixel = in_dark.pixel(x, y);
                EXPECT_FALSE(qAlpha(pixel) == 255 && light_colors.contains(pixel)) << name.toStdString() << ' ' << x << ' ' << y;
            }
        }
        EXPECT_NE(in_dark, in_light[name]) << name.toStdString();
    }
}

TEST_F(Theme, IconsThatWereMadeBeforeFollowAChangeOfColors) {
    const QIcon icon = GetIcon("close");
    const QRgb in_light = PictureOf(icon, 16).pixel(8, 8);
    Apply(ColorScheme::dark);
    const QRgb in_dark = PictureOf(icon, 16).pixel(8, 8);
    EXPECT_LT(qGray(in_light), 100);
    EXPECT_GT(qGray(in_dark), 155);
}

TEST_F(Theme, LinesOnTheGridAreSharpAtBothScales) {
    const QRgb ink = QApplication::palette().color(QPalette::WindowText).rgb();
    const QImage once = PictureOf(GetIcon("save"), 16);
    const QImage twice = PictureOf(GetIcon("save"), 16, 2);
    // The left edge of the disk: one pixel of full ink, and nothing beside it.
    EXPECT_EQ(once.pixel(1, 8), ink);
    EXPECT_EQ(qAlpha(once.pixel(0, 8)), 0);
    EXPECT_EQ(twice.pixel(2, 17), ink);
    EXPECT_EQ(twice.pixel(3, 17), ink);
    EXPECT_EQ(qAlpha(twice.pixel(1, 17)), 0);
}

TEST_F(Theme, ADisabledIconIsPalerAndASelectedOneReadableOnItsGround) {
    const QIcon icon = GetIcon("close");
    EXPECT_LT(Ink(PictureOf(icon, 16, 1, QIcon::Disabled)), Ink(PictureOf(icon, 16)) / 2);
    EXPECT_EQ(PictureOf(icon, 16, 1, QIcon::Selected).pixel(8, 8),
              QApplication::palette().color(QPalette::HighlightedText).rgb());
}

TEST_F(Theme, TellsTypesOfFilesByTheirExtension) {
    struct Row {
        const char* extension;
        const char* icon;
    };
    const Row rows[] = {{".pdf", "file.pdf"},           {".PDF", "file.pdf"},          {"txt", "file.text"},
                        {".jpeg", "file.image"},        {".xlsx", "file.spreadsheet"}, {".docx", "file.word"},
                        {".pptx", "file.presentation"}, {".zip", "file.archive"},      {".unheard", "file.generic"},
                        {".", "file.generic"},          {"", "file.generic"},          {".do", "file.generic"},
                        {".x y", "file.generic"},       {". ", "file.generic"},        {".pdf fdf", "file.generic"}};
    for (const Row& row : rows) {
        EXPECT_EQ(PictureOf(FileTypeIcon(row.extension), 16), PictureOf(GetIcon(row.icon), 16)) << row.extension;
    }
}

/// The contrast of two colours as WCAG 2.1 measures it.
double Contrast(const QColor& one, const QColor& other) {
    const auto luminance = [](const QColor& color) {
        const auto linear = [](double part) { return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4); };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
    };
    const auto [dark, bright] = std::minmax({luminance(one), luminance(other)});
    return (bright + 0.05) / (dark + 0.05);
}

TEST_F(Theme, BothSchemesKeepTextsReadable) {
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
        Apply(scheme);
        const QPalette palette = QApplication::palette();
        const std::pair<QPalette::ColorRole, QPalette::ColorRole> pairs[] = {{QPalette::WindowText, QPalette::Window},
                                                                             {QPalette::Text, QPalette::Base},
                                                                             {QPalette::Text, QPalette::AlternateBase},
                                                                             {QPalette::ButtonText, QPalette::Button},
                                                                             {QPalette::ToolTipText, QPalette::ToolTipBase},
                                                                             {QPalette::HighlightedText, QPalette::Highlight},
                                                                             {QPalette::Link, QPalette::Base},
                                                                             {QPalette::PlaceholderText, QPalette::Base}};
        for (const auto& [text, ground] : pairs) {
            // WCAG 2.1, success criterion 1.4.3.
            EXPECT_GE(Contrast(palette.color(text), palette.color(ground)), 4.5) << text << " on " << ground;
        }
    }
}

TEST_F(Theme, FieldsAndCheckBoxesHaveAnEdgeThatStandsOutFromTheWindow) {
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
        Apply(scheme);
        const std::unique_ptr<QWidget> fields[] = {
            std::make_unique<QCheckBox>(), std::make_unique<QRadioButton>(),   std::make_unique<QLineEdit>(),
            std::make_unique<QComboBox>(), std::make_unique<QPlainTextEdit>(), std::make_unique<QSpinBox>(),
        };
        for (const std::unique_ptr<QWidget>& field : fields) {
            const QImage picture = field->grab().toImage();
            const QColor ground = QApplication::palette().color(QPalette::Window);
            double most = 0;
            for (int x = 0; x < picture.width() / 4 + 8; ++x) { // across the left edge, before any text
                most = std::max(most, Contrast(picture.pixelColor(x, picture.height() / 2), ground));
            }
            // WCAG 2.1, success criterion 1.4.11.
            EXPECT_GE(most, 3) << field->metaObject()->className() << (scheme == ColorScheme::dark ? " in the dark" : "");
        }
    }
}

TEST_F(Theme, AnEditOfSeveralLinesShowsTheFocusInItsEdge) {
    QPlainTextEdit edit;
    edit.show();
    const QRgb without = edit.grab().toImage().pixel(0, edit.height() / 2);
    edit.activateWindow();
    edit.setFocus();
    QCoreApplication::processEvents();
    ASSERT_TRUE(edit.hasFocus());
    EXPECT_NE(edit.grab().toImage().pixel(0, edit.height() / 2), without);
}

} // namespace
