#pragma once

/// What a host tells the module about its documents, views and windows, so that every host tells it alike. Main thread.

#include "host/property_sheets.h"
#include "workbench/core/document.h"
#include "workbench/core/view.h"

class Host;

/// The life of one document after another: it is made known, shown, moves to another place, is closed. An event's failure is
/// given and changes nothing else.
class DocumentLife {
public:
    /// `host` outlives this.
    explicit DocumentLife(Host& host) : m_host(host) {}

    /// The document is open and its file can be asked for; its view isn't there yet. Makes it known to the host.
    HRESULT Opened(Document& document);
    /// Its view stands in the window.
    HRESULT ViewingStarted(Document& document);
    /// It was saved to another place, which is its source from now on, without a restriction; null for a place outside all
    /// providers.
    HRESULT SourceChanged(Document& document, KOV::IAFS_File* file);
    /// Nobody finds it any more, and it is cut from its owner.
    void Closed(Document& document);

    /// The texts are in another language: told once an open document.
    HRESULT LanguageChanged();

private:
    Host& m_host;
};

/// The commands of a frame were laid out afresh and the module may add its own. Once a layout.
HRESULT RaiseLayoutBuilt(Host& host, FrameView& view);
/// A window of pages is being built and the module may add its own.
HRESULT RaiseSheetsBuilt(Host& host, KOV::IUIX_PropSheets* sheets);
