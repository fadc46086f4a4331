#include "transport/RecordBound.h"

#include "protocol/ExternalCommand.h"
#include "protocol/RecordStream.h"
#include "trace/Trace.h"

using tracelog::libraryModule;
using tracelog::trace;

bool isTooLong(const IExternalCommand& command) {
    const std::size_t bytes = dynamic_cast<const ExternalCommand&>(command).recordBytes();
    if (bytes <= protocol::maxRecordBytes) return false;
    trace(libraryModule, tracelog::warning, 0,
          "Command %u is not sent: its record would have %lu bytes, at most %lu can travel\n",
          static_cast<unsigned int>(command.getId()), static_cast<unsigned long>(bytes),
          static_cast<unsigned long>(protocol::maxRecordBytes));
    return true;
}
