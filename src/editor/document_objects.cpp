#include "editor/document_objects.h"

#include "afs/file_system.h"
#include "frame/diagnostics/diagnostics.h"
#include "frame/plugin.h"
#include "host/instance.h"

HRESULT GetDocumentObjects(Plugin* plugin, KOV::IKOV_Document* document, DocumentObjects& out_infomation) {
    TRACE_ENTER();
    out_infomation = {};
    if (document == nullptr) {
        TRACE_RETURN(S_FALSE);
    }
    out_infomation.document = document;
    CHECK_OR_RETURN(out_infomation.document->get_CoreDoc(&out_infomation.core_document));
    if (out_infomation.core_document.IsNull()) {
        TRACE_RETURN(S_FALSE);
    }
    ComPtr<KOV::IKOV_SourceInfo> source_info;
    CHECK_OR_RETURN(out_infomation.core_document->get_SrcInfo(&source_info));
    if (source_info.IsNull()) {
        TRACE_RETURN(S_FALSE);
    }
    CHECK_OR_RETURN(source_info->get_File(&out_infomation.afs_file));
    if (out_infomation.afs_file.IsNull()) {
        TRACE_RETURN(S_FALSE);
    }
    CHECK_OR_RETURN(out_infomation.afs_file->get_Name(&out_infomation.afs_name));
    if (out_infomation.afs_name.IsNull()) {
        TRACE_RETURN(S_FALSE);
    }
    out_infomation.name = plugin->m_file_system->GetName(out_infomation.afs_name);
    if (out_infomation.name.IsNull()) {
        TRACE_RETURN(S_FALSE);
    }
    // Files with names of this provider are this provider's.
    out_infomation.file = static_cast<File*>(out_infomation.afs_file.Get());
    TRACE_RETURN(S_OK);
}

HRESULT GetActiveDocumentObjects(Plugin* plugin, KOV::IUIX_Obj* object, DocumentObjects& out_infomation) {
    TRACE_ENTER();
    out_infomation = {};
    ComPtr<KOV::IKOV_DocumentView> document_view;
    CHECK_OR_RETURN(plugin->m_kov_inst->GetDocViewFromUIObj(object, VARIANT_TRUE, &document_view));
    if (document_view.IsNull()) {
        TRACE_RETURN(S_FALSE);
    }
    ComPtr<KOV::IKOV_Document> document;
    CHECK_OR_RETURN(document_view->get_Doc(&document));
    CHECK_OR_RETURN(GetDocumentObjects(plugin, document, out_infomation));
    TRACE_RETURN(S_OK);
}
