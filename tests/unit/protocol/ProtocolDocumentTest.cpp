// docs/protocol.md against the one field list of each record: what the page says is what travels.
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "EveryCommand.h"
#include "FieldList.h"
#include "HexBytes.h"
#include "protocol/RecordHead.h"
#include "protocol/RecordStream.h"
#include "support/MarkdownTable.h"

using testing_support::bytesOf;
using testing_support::FieldList;
using testing_support::forEveryCommand;
using testing_support::linesOfDocument;
using testing_support::tableOf;

namespace {

std::vector<std::string> document() {
    return linesOfDocument(PROTOCOL_DOCUMENT);
}

/// As one line, so that a sentence is found wherever it is broken.
std::string wholeDocument() {
    std::string text;
    for (const std::string& line : document()) text += line + " ";
    return text;
}

std::vector<std::vector<std::string>> commandRows() {
    return tableOf(document(), "| id | command | sender | fields |");
}

/// `text` with what `replace` makes of every stretch from `begin` to the next `end`, both included.
template <class Replace>
std::string rewritten(std::string text, const std::string& begin, const std::string& end,
                      Replace&& replace) {
    std::size_t from = text.find(begin);
    while (from != std::string::npos) {
        const std::size_t to = text.find_first_of(end, from + begin.size());
        if (to == std::string::npos) throw std::runtime_error("no end of: " + text.substr(from));
        const std::string better = replace(text.substr(from, to + 1 - from));
        text.replace(from, to + 1 - from, better);
        from = text.find(begin, from + better.size());
    }
    return text;
}

/// "`text1` to `text4` str" as "`text1` str, `text2` str, ..., `text4` str".
std::string writtenOut(const std::string& fields) {
    const std::size_t to = fields.find("` to `");
    if (to == std::string::npos) return fields;
    const std::size_t begin = fields.rfind('`', to - 1);
    const std::string stem = fields.substr(begin, to - begin - 1);
    const std::size_t last = to + 5 + stem.size();  // the digit of the last
    std::string all;
    for (char digit = fields[to - 1]; digit <= fields[last]; ++digit)
        all += (all.empty() ? "" : ", ") + stem + digit + "` str";
    return fields.substr(0, begin) + all + fields.substr(last + 6);
}

/// The cell without what it only explains: notes in parentheses, escapes, hexadecimal numbers.
std::string plainFields(std::string cell) {
    const auto nothing = [](const std::string&) { return std::string(); };
    cell = rewritten(cell, " (", ")", nothing);
    cell = rewritten(cell, "\\", "<", [](const std::string&) { return std::string("<"); });
    cell = rewritten(cell + ",", "0x", ",", [](const std::string& number) {
        return std::to_string(std::stoull(number, nullptr, 16)) + ",";
    });
    cell.pop_back();
    return writtenOut(cell);
}

/// "`Ping` (A)" as "Ping".
std::string nameIn(const std::string& cell) {
    return cell.substr(1, cell.find('`', 1) - 1);
}

TEST(ProtocolDocument, ListsEveryCommandOnceInTheOrderOfTheIds) {
    std::vector<std::string> documented, built;
    for (const auto& row : commandRows()) documented.push_back(row.at(0) + " " + nameIn(row.at(1)));
#define QOR_NAME_COMMAND(commandId, Class, Record) \
    built.push_back(std::to_string(commandId) + " " + std::string(#Class).substr(7));
    QOR_COMMANDS(QOR_NAME_COMMAND)
#undef QOR_NAME_COMMAND
    EXPECT_EQ(documented, built);
}

TEST(ProtocolDocument, ShowsEveryFieldWithItsTypeAndInitialValueInWireOrder) {
    const auto rows = commandRows();
    std::size_t row = 0;
    forEveryCommand([&](auto commandClass) {
        using Record = typename decltype(commandClass)::Record;
        EXPECT_EQ(plainFields(rows.at(row++).at(3)), FieldList::of(Record()));
    });
}

TEST(ProtocolDocument, NamesTheNumbersOfTheFraming) {
    const std::string text = wholeDocument();
    const auto expectText = [&](const std::string& part) {
        EXPECT_NE(text.find(part), std::string::npos) << "\"" << part << "\"";
    };
    const auto mebibytes = [](std::size_t bytes) { return std::to_string(bytes >> 20) + " MiB"; };
    EXPECT_EQ(ExternalCommand::replyFlag, 0x10000u);
    expectText("reply flag 0x10000;");
    expectText("Id " + std::to_string(protocol::unassignedId) + " is not assigned.");
    expectText("at most " + mebibytes(protocol::maxRecordBytes) + " less these " +
               std::to_string(protocol::RecordHead::encodedBytes) + " bytes");
    expectText("at most " + std::to_string(protocol::maxRecordBytes) + " can travel");
    expectText("more than " + mebibytes(wire::Reader::maxDefaultedBytes) + " of them");
    expectText("more than " + mebibytes(wire::Reader::maxElementBytes) + " of memory");
}

TEST(ProtocolDocument, LaysOutTheHeadOfARecord) {
    std::vector<std::string> built;
    std::size_t offset = 0;
    const protocol::RecordHead head;
    protocol::RecordHead::fields(head, [&](const char*, const auto& word) {
        built.push_back(std::to_string(offset) + " " + std::to_string(wire::encodedBytes(word)));
        offset += wire::encodedBytes(word);
    });
    built.push_back(std::to_string(offset) + " L");
    std::vector<std::string> documented;
    for (const auto& row : tableOf(document(), "| offset | width | field |"))
        documented.push_back(row.at(0) + " " + row.at(1));
    EXPECT_EQ(documented, built);
}

TEST(ProtocolDocument, CountsTheBytesOfEachKindOfValue) {
    const auto bytes = [](const auto& value) { return std::to_string(wire::encodedBytes(value)); };
    const std::vector<std::vector<std::string>> starts = {
        {"`u32`, `i32`", bytes(std::uint32_t()) + ";"},
        {"`byte`", "widened to " + bytes(std::uint8_t()) + ";"},
        {"`bool`", bytes(true) + ": 1 true, 0 false"},
        {"`f64`", bytes(1.0) + ":"}};
    const auto rows = tableOf(document(), "| kind | bytes |");
    for (std::size_t i = 0; i < starts.size(); ++i) {
        EXPECT_EQ(rows.at(i).at(0), starts[i][0]);
        EXPECT_EQ(rows.at(i).at(1).rfind(starts[i][1], 0), 0u) << rows[i][1];
    }
}

/// The bytes of the hex block that is the `wanted`-th of the page.
std::string exampleBytes(int wanted) {
    std::string bytes;
    bool inside = false;
    for (const std::string& line : document()) {
        if (line == "```hex")
            inside = wanted-- == 0;
        else if (line == "```")
            inside = false;
        else if (inside)
            bytes += bytesOf(line.substr(0, line.find("   ")));
    }
    return bytes;
}

/// The command's record under the request id of the examples.
std::string recordOf(const ExternalCommand& command) {
    std::string record;
    command.write(record);
    return record.replace(4, 4, bytesOf("44 33 22 11"));
}

TEST(ProtocolDocument, HasExamplesThatAreRealRecords) {
    protocol::DirectCtrl write;
    write.paramIndex = 3;
    write.operation = protocol::DirectCtrl::writeValues;
    write.values = {850.0};
    EXPECT_EQ(exampleBytes(0), recordOf(CommandDirectCtrl(write)));
    protocol::Ping handled;
    handled.status = protocol::Ping::handled;
    CommandPing acknowledgement(handled);
    acknowledgement.stampAsReplyTo(0x11223344);
    EXPECT_EQ(exampleBytes(1), recordOf(acknowledgement));
}

}  // namespace
