#pragma once

#include "workbench/console/output.h"
#include "workbench/console/places.h"
#include "workbench/console/terminal.h"
#include "workbench/core/host.h"

/// What every command works with. Commands run on one worker thread.
struct Context {
    Host& host;
    Output& output;
    Terminal& terminal;
    Binder& binder;
    Places& places;
    FlagObject& cancel;

    KOV::IAFS_FileSys* Provider() const { return host.Provider(); }
    KOV::IKOV_Flag* Cancel() const { return &cancel; }
    /// Operations on files take this.
    operator ServerAccess() const { return {host, &cancel}; }
};
