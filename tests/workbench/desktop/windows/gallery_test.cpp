// Every layout as a person sees it. With KOV_PICTURES=FOLDER each is drawn there, with KOV_COLORS=dark in dark colours; the scale
// is Qt's (QT_SCALE_FACTOR).

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

#include "desk.h"
#include "workbench/desktop/theme/color_scheme.h"
#include "workbench/desktop/windows/gallery.h"
#include "workbench/desktop/windows/gallery_samples.h"

namespace {

void Draw(QWidget& widget, const QString& name) {
    const QString folder = qEnvironmentVariable("KOV_PICTURES");
    if (!folder.isEmpty()) {
        EXPECT_TRUE(widget.grab().save(folder + "/" + name + ".png"));
    }
}

/// The texts of `window` that are cut off.
std::string CutTexts(const QWidget& window) {
    std::string cut;
    for (const QWidget* const widget : window.findChildren<QWidget*>()) {
        const auto* const button = qobject_cast<const QAbstractButton*>(widget);
        const auto* const label = qobject_cast<const QLabel*>(widget);
        const bool is_path = label != nullptr && label->text().contains("://");
        const bool has_text = (button != nullptr && !button->text().isEmpty()) || (label != nullptr && !is_path);
        const bool is_line =
            qobject_cast<const QLineEdit*>(widget) != nullptr || qobject_cast<const QComboBox*>(widget) != nullptr;
        const bool is_too_narrow = has_text && widget->width() < widget->sizeHint().width();
        const bool is_too_low = (has_text || is_line) && widget->height() < widget->minimumSizeHint().height();
        if (widget->isVisible() && !widget->objectName().isEmpty() && (is_too_narrow || is_too_low)) {
            cut += widget->objectName().toStdString() + " ";
        }
    }
    return cut;
}

class GalleryTest : public DeskTest {
protected:
    GalleryTest() {
        if (qEnvironmentVariable("KOV_COLORS") == "dark") {
            ApplyColorScheme(*qApp, ColorScheme::dark);
        }
    }
    std::span<const BYTE> Layouts() const { return {reinterpret_cast<const BYTE*>(m_layouts.data()), m_layouts.size()}; }
};

} // namespace

TEST_F(GalleryTest, ShowsEveryLayoutWithNoTextCut) {
    Gallery gallery(*m_uix.Get(), Layouts());
    EXPECT_EQ(gallery.Names(), QStringList({"Controls", "OpenDialog", "SaveDialog", "WebBrowserDialog",
                                            "DlgAppPrefs.SharePoint.Name", "AdvancedPreferencesDialog"}));
    gallery.show();
    for (int index = 0; index < gallery.Names().size(); ++index) {
        gallery.Show(index);
        QCoreApplication::processEvents();
        EXPECT_EQ(CutTexts(gallery), "") << gallery.Names()[index].toStdString();
        Draw(gallery, "gallery_" + gallery.Names()[index]);
    }
}

TEST_F(GalleryTest, OpensEveryLayoutAsAWindowWithNoTextCut) {
    Gallery gallery(*m_uix.Get(), Layouts());
    int looked_at = 0;
    for (int index = 0; index < gallery.Names().size(); ++index) {
        Soon([&] {
            QWidget* const window = QApplication::activeModalWidget();
            ASSERT_NE(window, nullptr);
            QCoreApplication::processEvents();
            EXPECT_EQ(CutTexts(*window), "") << window->objectName().toStdString();
            Draw(*window, "window_" + window->objectName());
            window->resize(window->size() * 1.25);
            QCoreApplication::processEvents();
            EXPECT_EQ(CutTexts(*window), "") << window->objectName().toStdString() << ", larger";
            Draw(*window, "larger_" + window->objectName());
            ++looked_at;
            window->close();
        });
        gallery.Open(index);
    }
    EXPECT_EQ(looked_at, gallery.Names().size());
}
