#pragma once

/// The documents that are open in the host, by the file that each was opened from. Any thread.

#include <functional>
#include <mutex>
#include <vector>

#include "host/file.h"
#include "host/instance.h"

class Documents {
public:
    /// Reads the document anew from its file.
    using Reload = std::function<HRESULT(DWORD mode)>;

    /// Makes a document known, until `Remove`. The file, which may be null, isn't counted: it stays open at least as long.
    void Add(KOV::IKOV_Document* document, KOV::IAFS_File* file, Reload reload);
    /// The document lies in another file from now on. Nothing happens for one that isn't known.
    void SetFile(KOV::IKOV_Document* document, KOV::IAFS_File* file);
    void Remove(KOV::IKOV_Document* document);
    void Clear();

    ULONG Count() const;
    /// In the order in which they were added; null past the end.
    ComPtr<KOV::IKOV_Document> At(ULONG index) const;
    std::vector<ComPtr<KOV::IKOV_Document>> All() const;
    /// The document of this file or of one that it is a clone of; null when there is none.
    ComPtr<KOV::IKOV_Document> Find(KOV::IAFS_File* file) const;
    /// `E_INVALIDARG` for a document that isn't known.
    HRESULT ReloadDocument(KOV::IKOV_Document* document, DWORD mode) const;

private:
    struct Entry {
        ComPtr<KOV::IKOV_Document> document;
        KOV::IAFS_File* file;
        Reload reload;
    };

    mutable std::mutex m_lock;
    std::vector<Entry> m_entries;
};
