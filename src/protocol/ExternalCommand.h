#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "protocol/IExternalCommand.h"

/// The framing that all commands share. On the wire, little-endian:
///
///     offset 0   u32   header: command id in the low 16 bits, reply flag 0x10000
///     offset 4   u32   request id
///     offset 8   u32   payload length L
///     offset 12  L bytes of payload
///
/// Header bits other than these are written as 0 and ignored on reading.
class ExternalCommand : public IExternalCommand {
public:
    static constexpr std::uint32_t idMask = 0xFFFFu;
    static constexpr std::uint32_t replyFlag = 0x10000u;

    std::uint16_t getId() const override;
    /// Accepts the command and does nothing.
    bool execute(ICommandReplyer* replyer) override;
    void write(std::string& out) const override;
    std::unique_ptr<IExternalCommand> parse(const std::string& in,
                                            std::size_t& consumed) const override;

    virtual void serializePayload(std::string& out) const = 0;
    /// A new object of the same class, owned by the caller; null when memory does not suffice.
    virtual IExternalCommand* createFromPayload(std::string_view payload) const = 0;
    /// How many bytes `serializePayload` appends; counted, nothing is built.
    virtual std::size_t payloadBytes() const = 0;

    /// How many bytes `write` appends.
    std::size_t recordBytes() const;

    std::uint32_t header() const { return header_; }
    std::uint32_t requestId() const { return requestId_; }
    bool isReply() const { return (header_ & replyFlag) != 0; }

    /// Makes this command the answer to the one that carried `requestId`.
    void stampAsReplyTo(std::uint32_t requestId);

protected:
    /// Draws a fresh request id, which costs a whole generator fill.
    explicit ExternalCommand(std::uint16_t id);

private:
    std::uint32_t header_;
    std::uint32_t requestId_;
};
