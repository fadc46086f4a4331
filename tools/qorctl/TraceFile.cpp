#include "TraceFile.h"

#include <cstdio>
#include <fstream>
#include <utility>

namespace qorctl {

TraceFile::TraceFile(std::string path) : path_(std::move(path)) {}

void TraceFile::removeOld() const {
    std::remove(path_.c_str());
}

bool TraceFile::exists() const {
    return std::ifstream(path_).is_open();
}

}  // namespace qorctl
