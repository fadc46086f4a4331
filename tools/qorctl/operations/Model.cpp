#include <windows.h>

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <utility>

#include "Activity.h"
#include "HostPaths.h"
#include "Interrupt.h"
#include "JsonText.h"
#include "Numbers.h"
#include "operations/Operation.h"
#include "qorcontrol/Waiting.h"

namespace qorctl {
namespace {

// Where the library puts what QOR exports.
const char* const exportPaths[] = {"c:\\qor_exp.sde", "c:\\qor_exp_add.sde"};

constexpr unsigned int exportSliceMs = 50;

struct ModelRequest {
    QorControlFacade::ModelDescription model = {1, {}, 0xFFFFFFFF, {}, 0, {}, 0, {}};
    std::vector<std::string> extra;
    double exportWaitS = 2;
};

/// An export file as it was found.
struct Export {
    std::string path;
    bool exists = false;
    std::uint64_t bytes = 0;
    std::uint64_t written = 0;  ///< when, in the system's units

    explicit Export(const char* file) : path(file) {
        WIN32_FILE_ATTRIBUTE_DATA found = {};
        if (GetFileAttributesExA(file, GetFileExInfoStandard, &found) == 0) return;
        exists = true;
        bytes = (std::uint64_t{found.nFileSizeHigh} << 32) | found.nFileSizeLow;
        written = (std::uint64_t{found.ftLastWriteTime.dwHighDateTime} << 32) |
                  found.ftLastWriteTime.dwLowDateTime;
    }
    bool isNewerThan(const Export& other) const {
        return exists && (!other.exists || written != other.written || bytes != other.bytes);
    }
};

std::string checkExtra(const std::string& entry) {
    return entry.find('=') == std::string::npos || entry[0] == '='
               ? entry + " is no entry: KEY=VALUE is wanted"
               : std::string();
}

std::string absoluteUnlessEmpty(const std::string& path) {
    return path.empty() ? path : paths::absolute(path);
}

QorControlFacade::ModelDescription descriptionOf(const ModelRequest& request) {
    QorControlFacade::ModelDescription model = request.model;
    model.model = absoluteUnlessEmpty(model.model);
    model.hex = absoluteUnlessEmpty(model.hex);
    model.csv = absoluteUnlessEmpty(model.csv);
    for (const std::string& entry : request.extra) {
        const std::size_t sign = entry.find('=');
        model.extra[entry.substr(0, sign)] = entry.substr(sign + 1);
    }
    return model;
}

/// The export files that have come since `before` and do not grow any more: all as soon as they are
/// there, else those that have come in time.
std::vector<Export> awaitExports(const std::vector<Export>& before, double waitS) {
    const auto slices = static_cast<unsigned int>(waitS * 1000 / exportSliceMs);
    std::vector<Export> last = before;
    for (unsigned int slice = 0;; ++slice) {
        std::vector<Export> complete;
        for (std::size_t i = 0; i < before.size(); ++i) {
            Export now(before[i].path.c_str());
            if (now.isNewerThan(before[i]) && !now.isNewerThan(last[i])) complete.push_back(now);
            last[i] = std::move(now);
        }
        if (complete.size() == before.size() || slice > slices ||
            !interrupt::sleepMs(exportSliceMs))
            return complete;
    }
}

/// Nothing if Ctrl-C came first. QOR has 98 s for all of it.
std::optional<CallNotes> awaitOpened(Session& session, const ModelRequest& request) {
    const Activity activity(session.console(), "model", [] { return "QOR opens it"; });
    return session.background().run([&facade = std::as_const(session.facade()),
                                     model = descriptionOf(request)](CallNotes& notes) {
        notes.note(qorcontrol::openModelAndWait(facade, model));
    });
}

Reply openModel(Session& session, const ModelRequest& request) {
    const std::vector<Export> before(std::begin(exportPaths), std::end(exportPaths));
    session.letEcuGo();
    const auto calls = awaitOpened(session, request);
    if (!calls) return Reply::failure("cancelled with Ctrl-C");
    if (!calls->allWorked()) return Reply::of(calls->failure("QOR has not opened the model"));
    const std::vector<Export> fresh = awaitExports(before, request.exportWaitS);
    if (fresh.size() < before.size() && interrupt::isRequested())
        return Reply::failure("the wait for the export files was cancelled with Ctrl-C");
    Reply reply = Reply::success(fmt::format("opened, {} export files", fresh.size()));
    reply.result = {{"exports", nlohmann::json::array()}};
    for (const Export& file : fresh) {
        reply.lines.push_back(fmt::format("{}: {} bytes", file.path, file.bytes));
        reply.result["exports"].push_back({{"path", file.path}, {"bytes", file.bytes}});
    }
    return reply;
}

}  // namespace

OperationWork declareOpenModel(CLI::App& command) {
    const auto request = std::make_shared<ModelRequest>();
    const auto option = [&command](const char* name, unsigned int& value, const char* help) {
        whole(command.add_option(name, value, help))->type_name("NUMBER")->capture_default_str();
    };
    command.add_option("MODEL", request->model.model, "Model file")
        ->required()
        ->check(paths::whyNotAbsolute);
    option("--model-type", request->model.modelType, "Type of the model, 1 to 6");
    option("--model-option", request->model.modelOption, "QOR's number for the model");
    command.add_option("--hex", request->model.hex, "Data file")
        ->type_name("FILE")
        ->check(paths::whyNotAbsolute);
    option("--hex-option", request->model.hexOption, "QOR's number for it");
    command.add_option("--csv", request->model.csv, "Second data file")
        ->type_name("FILE")
        ->check(paths::whyNotAbsolute);
    option("--csv-option", request->model.csvOption, "QOR's number for it");
    command.add_option("--extra", request->extra, "Further entry for QOR; may be repeated")
        ->type_name("KEY=VALUE")
        ->take_all()
        ->check(checkExtra);
    finite(
        command.add_option("--export-wait", request->exportWaitS, "Time to wait for export files"))
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, 3600.0))
        ->capture_default_str();
    return [request](Session& session) { return openModel(session, *request); };
}

}  // namespace qorctl
