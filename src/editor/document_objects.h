#pragma once

/// From a document of the host to the module's own file and name behind it. Never asks a server. Main thread.

#include "afs/file.h"
#include "afs/name.h"
#include "host/document.h"

class Plugin;

struct DocumentObjects {
    ComPtr<KOV::IKOV_Document> document;
    ComPtr<KOV::IKOV_CoreDocument> core_document;
    ComPtr<KOV::IAFS_File> afs_file;
    ComPtr<KOV::IAFS_Name> afs_name;
    /// Null for a document that lies elsewhere: whoever asks tests this one.
    ComPtr<File> file;
    ComPtr<Name> name;
};

/// `S_FALSE` with as much as there is for a document that lies elsewhere.
HRESULT GetDocumentObjects(Plugin* plugin, KOV::IKOV_Document* document, DocumentObjects& out_infomation);

/// Of the document in whose view `object` lies; a frame has its active one. `S_OK` also for a document that lies elsewhere.
HRESULT GetActiveDocumentObjects(Plugin* plugin, KOV::IUIX_Obj* object, DocumentObjects& out_infomation);
