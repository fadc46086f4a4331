#include "client/ExportFiles.h"

/// The paths are the input's: no file of this machine is touched.
void exportfiles::handle(const protocol::StartEdit&) {}
