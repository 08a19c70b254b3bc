#include "workbench/console/documents.h"

#include <sys/stat.h>

#include "workbench/console/progress_bar.h"

LONGLONG Download(const Context& context, KOV::IAFS_File* file, int target) {
    ProgressBar progress(context.output, "downloading", DocumentSize(context, file));
    return Download(context, file, target, [&](LONGLONG done) { progress.Update(done); });
}

LONGLONG Upload(const Context& context, KOV::IAFS_File* file, int source) {
    struct stat facts {};
    ProgressBar progress(context.output, "uploading", fstat(source, &facts) == 0 ? facts.st_size : 0);
    return Upload(context, file, source, [&](LONGLONG sent) { progress.Update(sent); });
}

void FinishSave(const Context& context, KOV::IAFS_File* file) {
    ExecDocument(context, file, L"PerformAfterSave", nullptr);
    CloseDocument(context, file, KOV::AFS_CloseFile_AllowUI);
}
