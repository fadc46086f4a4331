#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

/// One command of the external-operating protocol: an object that turns itself into a
/// self-delimiting byte record and rebuilds itself from one. It owns all its fields by value and
/// is used by one thread at a time.
class IExternalCommand {
public:
    class ICommandReplyer;

    /// The number that alone chooses the class of a record (also called the command type).
    virtual std::uint16_t getId() const = 0;

    /// Runs a received command that no client handler takes; false means "not handled".
    virtual bool execute(ICommandReplyer* replyer) = 0;

    /// Appends the whole record to `out`.
    virtual void write(std::string& out) const = 0;

    /// Rebuilds a command of this object's own class from the record at the start of `in`. Empty
    /// if the record is incomplete, of another class or announces more than any real one holds;
    /// `consumed` is set to the record's length as soon as the record is complete and of this
    /// class, and untouched before that. Throws std::bad_alloc when memory does not suffice.
    virtual std::unique_ptr<IExternalCommand> parse(const std::string& in,
                                                    std::size_t& consumed) const = 0;

    virtual ~IExternalCommand() = default;

protected:
    IExternalCommand() = default;
    IExternalCommand(const IExternalCommand&) = default;
    IExternalCommand& operator=(const IExternalCommand&) = default;
};

/// Through which the handler of a received command answers it. Each transport has its own; the
/// object lives only as long as the handler runs.
class IExternalCommand::ICommandReplyer {
public:
    /// Stamps `answer` (reply flag, request id of the received command) and sends it. An empty
    /// `answer` releases the sender at once, in the transport's own way.
    virtual bool reply(std::unique_ptr<IExternalCommand> answer, unsigned int timeoutMs) = 0;

protected:
    ~ICommandReplyer() = default;
};
