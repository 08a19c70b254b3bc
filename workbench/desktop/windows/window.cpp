#include "workbench/desktop/windows/window.h"

#include <algorithm>
#include <utility>

#include <QCoreApplication>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include "platform/errors.h"
#include "workbench/core/errors.h"
#include "workbench/desktop/commands/command_bar.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/windows/controls/control.h"
#include "workbench/desktop/windows/elements.h"
#include "workbench/desktop/windows/neighbours.h"
#include "workbench/desktop/windows/window_face.h"

namespace {

constexpr HRESULT no_such_item = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);

QWidget* MakeFace(const KOV::CreateUiObjectParameters& parameters) {
    QWidget* const parent = WidgetOf(parameters.parent_window);
    // Qt's parent owns it; a window without one is deleted by `Destroy`.
    return (parameters.window_style & window_style_own) != 0 ? new WindowFace(parent) : new QWidget(parent);
}

DWORD NumberOf(KOV::IKOV_Inst& host, LPCWSTR name, VARIANT_BOOL create) {
    DWORD number = 0;
    return SUCCEEDED(host.Str2ID(name, create, &number)) ? number : 0;
}

QPushButton* DefaultButton(const Form& form) {
    auto* const button = form.findChild<QPushButton*>(ToQString(form.Shown().default_item), Qt::FindDirectChildrenOnly);
    return button != nullptr && button->isVisible() ? button : nullptr;
}

/// Where a person begins: a name to be typed, else what is read first.
QWidget* FirstToFocus(const Form& form) {
    QWidget* first = nullptr;
    for (const std::size_t index : ReadingOrder(form.Shown())) {
        const LayoutItem& item = form.Shown().items[index];
        auto* const widget = form.findChild<QWidget*>(ToQString(item.id), Qt::FindDirectChildrenOnly);
        if (widget == nullptr || widget->focusPolicy() == Qt::NoFocus || widget->isHidden()) {
            continue;
        }
        if (item.kind == ElementKind::edit && (item.style & (edit_style_many_lines | edit_style_number)) == 0) {
            return widget;
        }
        first = first == nullptr ? widget : first;
    }
    return first;
}

} // namespace

ComPtr<Window> Window::Make(const KOV::CreateUiObjectParameters& parameters, const Surroundings& surroundings,
                            const WindowPlaces& places) {
    if (parameters.layout == nullptr || parameters.layout_id == nullptr) {
        throw HostException(E_INVALIDARG, "A window needs a layout");
    }
    const Layout layout = ReadLayout(parameters.layout, parameters.layout_size, parameters.layout_id);
    const ComPtr<Window> window = MakeObject<Window>(MakeFace(parameters), layout, places);
    if (window.IsNull()) {
        throw HostException(E_OUTOFMEMORY, "There is no memory for a window");
    }
    window->Build(parameters, surroundings);
    return window;
}

Window::Window(QWidget* face, const Layout& layout, const WindowPlaces& places)
    : UiObjectT(face), m_name(ToQString(layout.id)), m_places(places), m_form(new Form(layout, face)) {}

Window::~Window() {
    // One that was destroyed has nothing left; one that wasn't is known to nobody.
    if (Owner() != nullptr) {
        Owner()->Destroy();
    }
    delete Widget();
}

void Window::Build(const KOV::CreateUiObjectParameters& parameters, const Surroundings& surroundings) {
    m_window_style = parameters.window_style;
    Enter(WindowCore::Create(Widget(), surroundings), parameters.parent_object,
          NumberOf(*surroundings.host, parameters.layout_id, VARIANT_TRUE));
    Widget()->setObjectName(m_name);
    Widget()->setWindowTitle(Shown(m_form->Shown().title.c_str()));
    auto* const column = new QVBoxLayout(Widget()); // the widget owns it
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    MakePane();
    column->addWidget(m_form, 1);
    for (std::size_t index = 0; index < m_form->Shown().items.size(); ++index) {
        MakeControl(index);
    }
    m_form->Connect();
    // Controls have their places from the beginning: the module may ask for them before the window is shown.
    Widget()->resize(Widget()->sizeHint());
    Widget()->layout()->activate();
    if (auto* const face = dynamic_cast<WindowFace*>(Widget())) {
        ListenToFace(*face);
    } else if (parameters.rect.right > parameters.rect.left && parameters.rect.bottom > parameters.rect.top) {
        Widget()->setGeometry(parameters.rect.left, parameters.rect.top, parameters.rect.right - parameters.rect.left,
                              parameters.rect.bottom - parameters.rect.top);
    }
    Owner()->SetImplementation(parameters.implementation);
    if (parameters.implementation != nullptr) {
        (void)parameters.implementation->put_Obj(this);
    }
    RaiseEvent(KOV::UiEvent_Created);
}

// Bars come and go while the window is up: it grows and shrinks with them, so that the area below keeps its size.
void Window::MakePane() {
    const ComPtr<CommandPane> pane = MakeObject<CommandPane>(Widget(), [this, alive = QPointer(Context())](int height) {
        if (alive == nullptr || Widget() == nullptr) {
            return;
        }
        const int more = height - std::exchange(m_pane_height, height);
        if (m_is_shown) {
            Widget()->resize(Widget()->width(), Widget()->height() + more);
        }
    });
    if (pane.IsNull()) {
        throw HostException(E_OUTOFMEMORY, "There is no memory for a pane");
    }
    pane->Adopt(Owner(), this, 0);
    static_cast<QVBoxLayout*>(Widget()->layout())->addWidget(pane->Widget());
    m_pane = pane;
}

void Window::MakeControl(std::size_t index) {
    const LayoutItem& item = m_form->Shown().items[index];
    const ComPtr<KOV::IUIX_Obj> object = ElementOf(item.kind).make(item, m_form);
    UiObject* const part = PartOf(object);
    if (part == nullptr) {
        throw HostException(E_OUTOFMEMORY, "There is no memory for a control");
    }
    part->Adopt(Owner(), this, NumberOf(Owner()->Host(), item.id.c_str(), VARIANT_TRUE));
    auto* const control = dynamic_cast<Control*>(part);
    if (control != nullptr) {
        control->Fill(item);
    }
    m_form->Put(index, part->Widget(), control);
}

void Window::ListenToFace(WindowFace& face) {
    const QPointer alive = Context();
    face.on_close = [this, alive] {
        if (alive != nullptr) {
            (void)EndModal(canceled_by_person);
        }
    };
    face.on_enter = [this, alive] {
        if (alive != nullptr) {
            Press();
        }
    };
    face.on_resize = [this, alive] {
        if (alive != nullptr && m_is_shown) {
            RaiseEvent(KOV::UiEvent_Size);
        }
    };
    face.setWindowModality(Qt::ApplicationModal);
    if (auto* const button = m_form->findChild<QPushButton*>(ToQString(m_form->Shown().default_item))) {
        button->setDefault(true);
    }
}

void Window::RaiseEvent(DWORD code, std::intptr_t parameter) {
    KOV::UiEvent event{};
    event.code = code;
    event.parameter = parameter;
    (void)Owner()->Raise(event); // the window stays as it is whatever a handler answers
}

// Enter presses the button that a person has gone to, else the default one. Where the focus strayed to doesn't count: it would be
// Cancel.
void Window::Press() {
    QWidget* const focus = m_form == nullptr ? nullptr : m_form->window()->focusWidget();
    auto* button = m_focus.IsStray(focus) ? nullptr : qobject_cast<QPushButton*>(focus);
    if (button == nullptr && m_form != nullptr) {
        button = DefaultButton(*m_form);
    }
    if (button != nullptr) {
        button->click(); // does nothing while it is disabled
    }
}

void Window::ShowFace() {
    QWidget& face = *Widget();
    if ((m_window_style & window_style_resizable) == 0 && !m_form->CanGrow()) {
        face.layout()->setSizeConstraint(QLayout::SetFixedSize);
    } else if (!m_places.Restore(m_name, face)) {
        face.resize(face.sizeHint().boundedTo(face.screen()->availableSize()));
    }
    if (QWidget* const first = FirstToFocus(*m_form)) {
        m_focus.Want(*first);
    }
    face.show();
    m_is_shown = true;
}

void Window::HideFace() {
    if (Widget() != nullptr && std::exchange(m_is_shown, false)) {
        Widget()->hide();
        Widget()->resize(Widget()->width(), Widget()->height() - m_pane_height); // the next showing begins without bars
        m_places.Keep(m_name, *Widget());
    }
    m_modality.reset();
}

HRESULT Window::DoModal(LONG, LONGLONG* io_result) {
    if (io_result == nullptr) {
        return E_POINTER;
    }
    if (Widget() == nullptr) {
        return window_is_gone;
    }
    if (!Widget()->isWindow() || std::exchange(m_was_modal, true)) {
        return E_UNEXPECTED;
    }
    const ComPtr<KOV::IUIX_Obj> self = this;
    QObject::connect(Widget(), &QObject::destroyed, &m_loop, &QEventLoop::quit);
    m_modality.emplace(Owner()->Handle());
    ShowFace();
    RaiseEvent(KOV::UiEvent_Size);
    RaiseEvent(KOV::UiEvent_ShowModal);
    RunLoop();
    FinishModal(io_result);
    return S_OK;
}

// A program that ends stops all loops at once. It counts as a person who closes the window: the implementation is asked as ever,
// and what it is in the middle of still finds its window and a loop that turns.
void Window::RunLoop() {
    const auto is_up = [this] { return !m_end_code && Widget() != nullptr; };
    if (is_up()) {
        m_loop.exec();
    }
    if (is_up() && !m_is_vetoed) {
        (void)EndModal(canceled_by_person);
    }
    while (is_up()) {
        m_loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void Window::FinishModal(LONGLONG* io_result) {
    Owner()->EndNotifications();
    HideFace();
    RaiseEvent(KOV::UiEvent_EndModal, static_cast<std::intptr_t>(m_end_code.value_or(*io_result)));
    *io_result = m_end_code.value_or(*io_result);
}

HRESULT Window::EndModal(LONGLONG code) {
    if (m_end_code || m_is_ending) {
        return S_FALSE; // the first one wins
    }
    const ComPtr<KOV::IUIX_Obj> self = this;
    KOV::UiEvent event{};
    event.code = KOV::UiEvent_PreEndModal;
    event.parameter = static_cast<std::intptr_t>(code);
    m_is_ending = true;
    (void)Owner()->Raise(event);
    m_is_ending = false;
    m_is_vetoed = event.veto != 0;
    if (m_is_vetoed) {
        HideFace();
        return S_OK;
    }
    m_end_code = code;
    m_loop.quit();
    return S_OK;
}

HRESULT Window::Destroy() {
    const ComPtr<KOV::IUIX_Obj> self = this;
    const ComPtr<KOV::IUIX_ObjImpl> implementation = Owner()->Implementation();
    HideFace();
    Owner()->Destroy();
    Detach();
    if (Widget() != nullptr) {
        Widget()->deleteLater(); // it may be in the middle of its own event
    }
    m_pane.Release();
    m_loop.quit();
    if (!implementation.IsNull()) {
        (void)implementation->put_Obj(nullptr);
    }
    return S_OK;
}

ComPtr<KOV::IUIX_Obj> Window::Item(LPCWSTR id) const {
    return id == nullptr ? nullptr : Owner()->Find(NumberOf(Owner()->Host(), id, VARIANT_FALSE));
}

template <class Function>
HRESULT Window::WithControl(LPCWSTR id, Function&& function) const {
    const ComPtr<KOV::IUIX_Obj> object = Item(id);
    if (object.IsNull()) {
        return no_such_item;
    }
    auto* const control = dynamic_cast<Control*>(PartOf(object));
    return control == nullptr ? E_NOTIMPL : function(*control);
}

HRESULT Window::GetItem(LPCWSTR id, LONG, KOV::IUIX_Obj** out_object) {
    if (out_object == nullptr) {
        return E_POINTER;
    }
    *out_object = Item(id).Detach();
    return *out_object != nullptr ? S_OK : no_such_item;
}

HRESULT Window::ShowItem(LPCWSTR id, VARIANT_BOOL show) {
    const ComPtr<KOV::IUIX_Obj> object = Item(id);
    constexpr LONG hide_command = 0;
    constexpr LONG show_command = 5;
    return object.IsNull() ? no_such_item : object->Show(show != VARIANT_FALSE ? show_command : hide_command, -1);
}

HRESULT Window::EnableItem(LPCWSTR id, VARIANT_BOOL enable) {
    const ComPtr<KOV::IUIX_Obj> object = Item(id);
    UiObject* const part = PartOf(object);
    if (part == nullptr) {
        return no_such_item;
    }
    if (part->Widget() == nullptr) {
        return window_is_gone;
    }
    m_focus.Enable(*part->Widget(), enable != VARIANT_FALSE);
    return S_OK;
}

HRESULT Window::SetItemText(LPCWSTR id, LPCWSTR text) {
    return WithControl(id, [&](Control& control) {
        const QString shown = control.IsTypedInto() ? ToQString(text) : Shown(text);
        QString current;
        const HRESULT result = control.GetText(current);
        return SUCCEEDED(result) && current == shown ? S_OK : control.PutText(shown);
    });
}

HRESULT Window::GetItemText(LPCWSTR id, BSTR* out_text) {
    if (out_text == nullptr) {
        return E_POINTER;
    }
    *out_text = nullptr;
    return WithControl(id, [&](Control& control) {
        QString text;
        const HRESULT result = control.GetText(text);
        *out_text = SUCCEEDED(result) ? ToBstr(text) : nullptr;
        return SUCCEEDED(result) && *out_text == nullptr ? E_OUTOFMEMORY : result;
    });
}

HRESULT Window::SetItemCheck(LPCWSTR id, LONG value, LONG) {
    return WithControl(id, [&](Control& control) { return control.PutCheck(value); });
}

HRESULT Window::GetItemCheck(LPCWSTR id, LONG* out_value) {
    if (out_value == nullptr) {
        return E_POINTER;
    }
    *out_value = 0;
    return WithControl(id, [&](Control& control) { return control.GetCheck(*out_value); });
}

HRESULT Window::SelectComboItem(LPCWSTR id, LONG index) {
    ComPtr<KOV::IUIX_Combo> combo;
    const ComPtr<KOV::IUIX_Obj> object = Item(id);
    if (object.IsNull()) {
        return no_such_item;
    }
    const HRESULT result = object->_QueryImpl(&combo);
    return FAILED(result) ? result : combo->put_SelItem(index);
}

HRESULT Window::get_CmdPaneTop(KOV::IUIX_CmdPane** out_pane) {
    if (out_pane == nullptr) {
        return E_POINTER;
    }
    m_pane.CopyTo(out_pane);
    return m_pane.IsNull() ? E_NOTIMPL : S_OK;
}
