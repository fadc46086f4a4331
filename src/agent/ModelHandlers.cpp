#include "agent/QorProtocolAgent.h"
#include "trace/Trace.h"

namespace {

/// The kinds of model that QOR knows: 1 to 5; a sixth is opened like the second.
std::uint32_t modeOf(std::uint32_t modelType, std::uint32_t otherwise) {
    if (modelType == 6) return 2;
    return modelType >= 1 && modelType <= 5 ? modelType : otherwise;
}

protocol::StartEdit makeModelRecord(const QorControlFacade::ModelDescription& model) {
    protocol::StartEdit record;
    record.path = model.model;
    record.number = model.modelOption;
    if (!model.hex.empty()) {
        record.files.push_back(model.hex);
        record.fileNumbers.push_back(model.hexOption);
    }
    if (!model.csv.empty()) {
        record.addFiles.push_back(model.csv);
        record.addFileNumbers.push_back(model.csvOption);
    }
    record.info = model.extra;
    record.mode = modeOf(model.modelType, record.mode);
    return record;
}

}  // namespace

bool QorProtocolAgent::openModel(const Request<channel::CmdDataModel>& request) {
    channel_->contact.forget();
    client_->disconnectEcu();
    if (!client_->shutdown(false, true))
        tracelog::trace(tracelog::libraryModule, tracelog::error, 0, "%s",
                        "Failed to shutdown QOR\n");
    return client_->startEdit(makeModelRecord(request->model)) && request.succeed();
}

bool QorProtocolAgent::selectSegment(const Request<channel::CmdDataSegment>& request) {
    // The monitor that comes along has no part in this: a change of page cannot be cancelled.
    return client_->setEcuSegment(request->segment, request->flag) && request.succeed();
}
