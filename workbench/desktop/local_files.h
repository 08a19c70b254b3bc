#pragma once

/// Documents on this machine. Failures are HostException with the path in words.

#include <filesystem>
#include <optional>

#include <QString>

#include "workbench/core/unsaved_copies.h"

/// By what two states of a file are told apart; nothing when it isn't there.
std::optional<Stamp> StampOfLocalFile(const QString& path);
/// Copies the bytes of a regular file to an open descriptor.
void CopyLocalFile(const QString& path, int target);
/// Puts the bytes of `content` in the place of the file at `path`, which is whole at every moment.
void ReplaceLocalFile(const QString& path, const std::filesystem::path& content);
