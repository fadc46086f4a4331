#include "client/ExportFiles.h"

#include <cstdlib>

/// The faked QOR exports nothing.
void exportfiles::handle(const protocol::StartEdit&) {
    std::abort();
}
