#include "workbench/core/document_life.h"

#include "workbench/core/documents.h"
#include "workbench/core/event_server.h"
#include "workbench/core/host.h"

HRESULT DocumentLife::Opened(Document& document) {
    m_host.OpenDocuments().Add(&document, document.File(),
                               [held = ComPtr<Document>(&document)](DWORD mode) { return held->Reload(mode); });
    return m_host.Events().Raise(L"e.document.initialized", &document);
}

HRESULT DocumentLife::ViewingStarted(Document& document) {
    return m_host.Events().Raise(L"e.document.viewingStarted", &document);
}

HRESULT DocumentLife::SourceChanged(Document& document, KOV::IAFS_File* file) {
    // In this order: what the host looks for a document by isn't counted, and the document releases its old one.
    m_host.OpenDocuments().SetFile(&document, file);
    document.SetSource(file);
    return m_host.Events().Raise(L"e.document.sourceChanged", &document);
}

void DocumentLife::Closed(Document& document) {
    const ComPtr<Document> held = &document;
    m_host.OpenDocuments().Remove(&document);
    held->Close();
}

HRESULT DocumentLife::LanguageChanged() {
    HRESULT result = S_OK;
    for (const ComPtr<KOV::IKOV_Document>& document : m_host.OpenDocuments().All()) {
        const HRESULT outcome = m_host.Events().Raise(L"e.uiLanguageChanged", document);
        result = SUCCEEDED(result) ? outcome : result;
    }
    return result;
}

HRESULT RaiseLayoutBuilt(Host& host, FrameView& view) { return host.Events().Raise(L"e.customizeCmdLayout", &view); }

HRESULT RaiseSheetsBuilt(Host& host, KOV::IUIX_PropSheets* sheets) {
    return host.Events().Raise(L"e.customizePropDialog", sheets);
}
