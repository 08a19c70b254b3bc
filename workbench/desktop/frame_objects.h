#pragma once

/// The main window and the documents in it as objects of the host's interfaces, through which the module finds the document that
/// a command is about.

#include <mutex>

#include "workbench/core/document.h"
#include "workbench/desktop/objects/ui_object.h"

/// One document in the window. Asking it for the document: any thread.
class TabObject final : public UiObjectT<KOV::IKOV_DocumentView> {
public:
    TabObject(QWidget* widget, ComPtr<Document> document, HWND window)
        : UiObjectT(widget), m_document(std::move(document)), m_window(window) {}

    HRESULT get_Doc(KOV::IKOV_Document** out_document) override;
    HRESULT get_WndHandle(HWND* out_window) override;

private:
    const ComPtr<Document> m_document;
    const HWND m_window;
};

/// The window; asked for a document's view it gives the active one. That question: any thread.
class FrameObject final : public UiObjectT<> {
public:
    explicit FrameObject(QWidget* widget) : UiObjectT(widget) {}

    /// Null when no document is open. Main thread.
    void SetActive(ComPtr<TabObject> tab);
    HRESULT _QueryImpl(REFIID id, void** out_interface) override;

private:
    std::mutex m_lock;
    ComPtr<TabObject> m_active;
};
