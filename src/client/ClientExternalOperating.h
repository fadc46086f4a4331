#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "client/ClientSettings.h"
#include "client/ClientState.h"
#include "client/IMessageBox.h"
#include "client/IProcessStarter.h"
#include "common/Doubles.h"
#include "common/Guarded.h"
#include "common/Interest.h"
#include "common/News.h"
#include "common/Verdict.h"
#include "qorcontrol/HostInterfaces.h"
#include "transport/ICommandReceiver.h"
#include "transport/IExternalCommandFactory.h"

/// The client side of the external-operating protocol: starts QOR, sends it commands and waits
/// for the answers. It is what its transport hands everything to that QOR sends; the handlers of
/// those commands store it here through the `on...` operations.
///
/// All operations but those of the receiving side belong to the thread that made the client (the
/// agent thread); they return true on success and throw nothing but std::bad_alloc. Only
/// `connectEcu` reports, to its monitor. While they wait they dispatch that thread's copy-data
/// messages. Time-outs are milliseconds, with the transport's special values.
class ClientExternalOperating : public ICommandReceiver {
public:
    /// Hears of a connect's progress, on the agent thread.
    class ConnectCallback {
    public:
        /// It has changed; also what an earlier connect has left is a first change.
        virtual void onProgress() = 0;
        /// QOR has told a figure, its `steps`th of this connect; not of each if they come quickly,
        /// but always of the last one.
        virtual void onFigure(std::int32_t figure, std::uint32_t steps) = 0;

    protected:
        ~ConnectCallback() = default;
    };

    /// Makes the transport, which is started when the client is complete; tests make their own.
    using MakeTransport =
        std::function<std::unique_ptr<IExternalCommandFactory>(ICommandReceiver&)>;

    /// Checks that the settings file can be read, reads it, prepares the window framework as the
    /// settings say and makes the client. Throws std::runtime_error with a text for the operator.
    static std::unique_ptr<ClientExternalOperating> create(const std::string& settingsPath,
                                                           std::unique_ptr<IMessageBox> messageBox);

    /// With the transport that the settings choose.
    ClientExternalOperating(const ClientSettings& settings,
                            std::unique_ptr<IMessageBox> messageBox);
    ClientExternalOperating(const ClientSettings& settings, const MakeTransport& makeTransport,
                            std::unique_ptr<IProcessStarter> processStarter,
                            std::unique_ptr<IMessageBox> messageBox);
    virtual ~ClientExternalOperating();
    ClientExternalOperating(const ClientExternalOperating&) = delete;
    ClientExternalOperating& operator=(const ClientExternalOperating&) = delete;

    /// Ends the work of the transport's own threads. False if one hangs in a call of the system
    /// and may still use the client, which must then not be deleted.
    bool stop() { return transport_ == nullptr || transport_->stop(); }

    /// See the transport.
    void setNoDelay(bool isWanted) { transport_->setNoDelay(isWanted); }

    /// The resolved path of QOR's executable; empty if the settings name none.
    const std::string& executablePath() const { return executablePath_; }
    /// Drive and directory of that path; for debuggers, no operation needs them.
    const std::string& qorDirectory() const { return qorDirectory_; }

    /// The operations up to `endRequest` are for one request: once its caller (null: nobody) has
    /// given up, no command for it leaves for QOR any more, and none that names a parameter leaves
    /// once the epoch is over in which the request began.
    void beginRequest(std::shared_ptr<common::Interest> caller);
    void endRequest();

    /// Of the last operation that has failed since `beginRequest`: why; and whether what the
    /// operations since then have told may belong to earlier requests.
    const common::Verdict& verdict() const { return verdict_; }

    /// The present epoch. Another one begins when QOR turns out to be another one, or has opened
    /// another model: descriptions, values and streams of the old epoch are forgotten then.
    Epoch epoch() { return state_.lock()->epoch; }

    /// Makes sure that QOR runs and answers; starts it unless it does, or unless the settings
    /// name no executable.
    bool launch(unsigned int timeoutMs);
    /// Why the last `launch` has failed, for people.
    const std::string& launchFailure() const { return launchFailure_; }
    bool ping(unsigned int timeoutMs);

    /// Sends the connection request and, with a monitor, follows the ECU's bootstrap to its end;
    /// without one it returns as soon as QOR has accepted the request. A failure of the bootstrap
    /// is reported to the monitor.
    bool connectEcu(const protocol::KwpConnect& record, IProgressMonitor* monitor,
                    ConnectCallback& callback);
    bool disconnectEcu();
    /// What QOR last said of the ECU. Asks QOR every 400 ms, without waiting for the answer: the
    /// call that asks returns false unless the answer comes during the send.
    bool isEcuOnline();
    bool shutdown(bool firstOption, bool secondOption);

    /// The description of a parameter, from the table once QOR has told it. A name that QOR does
    /// not know stays known as unknown, until `refresh` is given.
    bool getParamInfo(const std::string& name, protocol::ParamInfo& description,
                      unsigned int timeoutMs, bool refresh);
    /// The same on the way to another request about the parameter. Whosever the description was, it
    /// is that of the name: it does not mark the verdict.
    bool lookUp(const std::string& name, protocol::ParamInfo& description, unsigned int timeoutMs);
    /// The first array of a parameter; without `refresh` a value that is there already will do.
    bool getParamData(const std::string& name, common::Doubles& values, unsigned int timeoutMs,
                      bool refresh);
    bool setParamData(const std::string& name, common::Doubles values);
    /// The three arrays of a parameter.
    bool getStaticParam(const std::string& name, SampledValue& sample, unsigned int timeoutMs);
    bool setStaticParam(const std::string& name, SampledValue sample);

    /// The value as a text in QOR's notation.
    bool setDynamicData(const std::string& name, common::Doubles values, std::string text);
    bool startDirectCtrl(const std::string& name);
    bool stopDirectCtrl(const std::string& name);
    /// The first arrays of several parameters, in the order of the names. What came for some of
    /// them counts only when all have come; no names succeed at once.
    bool readTogether(const std::vector<std::string>& names,
                      std::vector<std::vector<double>>& values, unsigned int timeoutMs);

    /// Asks the QOR of this epoch to send these parameters' values by itself, until as many
    /// `unsubscribe` calls have taken them back. A `subscribe` that fails, also because the epoch
    /// is over, changes nothing. What an epoch has asked for is forgotten with it and cannot be
    /// taken back in the next: an `unsubscribe` for an older epoch only sends QOR the present list
    /// as it is, because QOR may be the one it always was and still go by its old list.
    /// For who wants each value, not only the latest one, `cursors` gets one per name.
    bool subscribe(Epoch epoch, const std::vector<std::string>& names,
                   std::vector<ArrivalCursor>* cursors = nullptr);
    bool unsubscribe(Epoch epoch, const std::vector<std::string>& names);
    /// The values that QOR last sent of a parameter, with the time of their arrival; without a
    /// command once the name is known.
    bool peekParamData(const std::string& name, SampledValue& sample);
    /// What QOR has sent by itself, of parameters that were subscribed to with cursors in that
    /// epoch, the present one or the one before: for each cursor what came behind it. What is too
    /// old is not kept.
    std::vector<std::vector<ArrivedValue>> collectArrivals(
        Epoch epoch, const std::vector<ArrivalCursor>& cursors);

    /// The trouble codes. There is no selection by status: QOR is passed whether the mask is 0.
    bool getDtc(std::uint32_t statusMask, std::vector<protocol::DtcRecord>& dtcs,
                unsigned int timeoutMs);
    bool clearDtc();
    /// One KWP exchange; only after a connect. `answer` is the whole record as QOR sent it back.
    bool execKwp(const protocol::ExecKwp& request, protocol::ExecKwp& answer);
    bool connectCanBus(const protocol::CanBusConnect& settings);
    bool getCanBusData(const std::vector<protocol::CanBusItem>& request,
                       std::vector<protocol::CanBusItem>& frames, unsigned int timeoutMs);
    bool sendCanBusMsg(const protocol::CanBusSend& message, unsigned int timeoutMs);

    bool setEcuSegment(const std::string& segment, bool flag);
    bool startEdit(const protocol::StartEdit& model);

    // The receiving side, on the transport's receiving thread. What follows `onNewQor` is called by
    // the handlers of received commands; what may be long is handed over.
    const Prototypes& prototypes() const override { return prototypes_; }
    bool handleCommand(IExternalCommand& command,
                       IExternalCommand::ICommandReplyer& replyer) override;
    /// Also said when QOR has opened another model, then on the agent thread: it knows other
    /// parameters from then on.
    void onNewQor() override;
    void onRefused(std::uint32_t requestId) override;
    void onUnreadable(const UnreadRecord& record) override;
    void onParamValue(std::int32_t id, double value);
    void onParamInfo(const protocol::ParamInfo& record, const Answered& answered = {});
    void onDirectCtrl(protocol::DirectCtrl record, const Answered& answered = {});
    void onStaticParam(protocol::StaticParam record, const Answered& answered = {});
    void onDtcs(protocol::GetDtc record, const Answered& answered = {});
    void onCanBusData(protocol::CanBusData record, const Answered& answered = {});
    void onKwpAnswer(protocol::ExecKwp record, const Answered& answered = {});
    void onModelDescription(const protocol::GetHex& record);
    /// An answer to a read of several has been taken, which names the parameters `lacking` without
    /// values for them. What it has not told will not come again.
    void onReadTogether(const std::set<std::int32_t>& lacking, const Answered& answered);
    /// Something has come in place of data: of this kind, for the request that it names. Told of
    /// the request that waits, if that is the one, once its time has passed without data.
    void onTrouble(std::uint32_t commandId, const Answered& answered, qorcontrol::Cause cause,
                   const char* detail);

    /// For the handlers that act by themselves.
    IExternalCommandFactory& transport() { return *transport_; }
    IMessageBox& messageBox() { return *messageBox_; }

    /// Ends every wait of the client as a failure. For tests alone: the thread that waits is the
    /// one that destroys the client, so nothing waits when the destructor does the same.
    void stopOperating() {
        operating_ = false;
        handled_.tell();
    }

private:
    /// Where a parameter is to be found, and how long that holds.
    struct Place {
        Epoch epoch = 0;
        std::int32_t index = 0;
    };
    class Awaiting;

    /// A description and the epoch in which it holds.
    bool describe(const std::string& name, protocol::ParamInfo& description, Epoch& epoch,
                  unsigned int timeoutMs);
    bool lookUp(const std::string& name, protocol::ParamInfo& description, Epoch& epoch,
                unsigned int timeoutMs);

    /// A name's place for a request about it; false if there is none to be had in time.
    bool resolve(const std::string& name, unsigned int timeoutMs, Place& place);

    /// Copies what `entry` finds in the tables; false if there is nothing, or another epoch.
    template <class Find, class T>
    static bool copyOut(const ClientState& state, Epoch epoch, Find entry, T& copy);

    /// Pumps until `isThere` is true, the time-out has passed or the client ends; in between it
    /// waits for QOR's next command to be handled.
    template <class Condition>
    bool waitUntil(unsigned int timeoutMs, Condition isThere);
    /// The same for the data that a command has asked for, which `isThere` finds in the state, and
    /// takes. An answer that names its request is no earlier one's; one behind data that was
    /// another's may be, though nothing is owed any more.
    template <class Condition>
    bool awaitData(unsigned int timeoutMs, Condition isThere);
    /// The whole handling of a received command.
    bool dispatch(IExternalCommand& command, IExternalCommand::ICommandReplyer& replyer);
    /// A record names a request; is it of the kind that that one awaits?
    void noteKind(std::uint32_t commandId, std::uint32_t requestId);

    bool directCtrl(const std::string& name, std::uint32_t operation, common::Doubles values,
                    std::string text);
    /// The names' indices, all of one epoch.
    bool resolveAll(const std::vector<std::string>& names, unsigned int timeoutMs, Epoch& epoch,
                    std::vector<std::int32_t>& indices);
    bool sendSubscriptions(Epoch epoch);
    bool count(Epoch epoch, const std::vector<std::int32_t>& indices, std::int32_t difference);
    std::vector<ArrivalCursor> keepArrivals(const std::vector<std::int32_t>& indices);

    /// Sends a command for the present caller (unless nobody is to wait for it); with an epoch one
    /// that names indices, which leaves in that epoch only.
    template <class Command>
    bool send(typename Command::Payload payload, unsigned int timeoutMs,
              std::optional<Epoch> epoch = std::nullopt);
    /// The same for a command that is answered with data: of each key one thing of `owed`.
    /// `forget` drops what is there of such data, in the moment from which on it is known whether
    /// what comes can be this command's.
    template <class Command, class Key, class Forget>
    bool ask(typename Command::Payload payload, unsigned int timeoutMs,
             Owed<Key> ClientState::*owed, const std::vector<Key>& keys, Forget forget,
             std::optional<Epoch> epoch = std::nullopt);

    IExternalCommandFactory::Permit permit(unsigned int timeoutMs, std::optional<Epoch> epoch);
    /// Before a send, and with its end: whether QOR has taken the command.
    void beginSend();
    bool endSend(Delivery delivery);

    /// Both are always false.
    bool fail(qorcontrol::Cause cause, const char* detail = "", const char* check = "");
    bool failForLackOfData();

    bool startProcess(const std::string& executable, unsigned int timeoutMs);
    bool failToLaunch(std::string reason);

    const ClientSettings settings_;
    std::string executablePath_;
    std::string qorDirectory_;
    common::Guarded<ClientState> state_;
    std::atomic<bool> operating_{true};
    common::News handled_;  // a command of QOR's has been
    // Of the request under way, for the agent thread alone.
    std::shared_ptr<common::Interest> caller_;
    std::optional<Epoch> requestEpoch_;
    common::Verdict verdict_;
    std::string launchFailure_;
    Epoch sentIn_ = 0;        // the last command
    bool wasMarked_ = false;  // and the verdict before it
    std::unique_ptr<IExternalCommandFactory> transport_;
    std::unique_ptr<IProcessStarter> processStarter_;
    std::unique_ptr<IMessageBox> messageBox_;
    Prototypes prototypes_;
};
