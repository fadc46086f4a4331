#pragma once

#include "protocol/Records.h"

/// What QOR exports from a model that was opened: its files are moved to two fixed paths, where
/// the station's programs pick them up. The paths are shared by everything on the machine.
namespace exportfiles {

constexpr const char* exportTarget = "c:\\qor_exp.sde";
constexpr const char* addExportTarget = "c:\\qor_exp_add.sde";

/// No more than this of a file is copied; the rest is lost with the file.
constexpr unsigned int maxBytes = 200000;

/// Handles a record that QOR sent. Nothing is reported: a file that cannot be read gives an empty
/// target, one that cannot be written loses the data, and the source is deleted in every case. A
/// record that announces a file without naming one changes nothing.
void handle(const protocol::StartEdit& record);

}  // namespace exportfiles
