#include "ConnectOptions.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

using namespace qorctl;

namespace {

ConnectOptions parsed(const std::string& words) {
    CLI::App app;
    ConnectOptions options;
    options.declare(app, true);
    app.parse(words);
    return options;
}

}  // namespace

TEST(ConnectOptions, WhatIsNotSaidIsAsQorWouldHaveIt) {
    const ConnectOptions options = parsed("");
    const auto record = options.record(200);

    EXPECT_EQ(QorControlFacade::EcuConnect::Default, options.connType());
    EXPECT_EQ(1u, record.protocol);
    EXPECT_EQ(1u, record.protocolOption);
    EXPECT_TRUE(record.optionFlag);
    EXPECT_EQ(10400u, record.kLineBaudRate);
    EXPECT_EQ(125000u, record.canBaudRate);
    EXPECT_EQ(200u, record.refreshPeriodMs);
    EXPECT_EQ(0xFFFFFFFFu, record.canRequestId);
    EXPECT_EQ(0xFFFFFFFFu, record.canResponseId);
    EXPECT_EQ(0xFF, record.addressByte1);
    EXPECT_EQ(0xFF, record.addressByte2);
    EXPECT_EQ(255u, record.addressWord);
    EXPECT_TRUE(record.extraFlag);
    EXPECT_EQ("", record.securityDll);
    EXPECT_TRUE(record.finalFlag);
}

TEST(ConnectOptions, EachOptionSetsItsOwnField) {
    const auto record =
        parsed(
            "--protocol 4 --protocol-option 2 --k-line-baud 9600 --can-baud 500000 "
            "--request-id 0x7E0 --response-id 0x7E8 --address-byte1 0x10 --address-byte2 0xF1 "
            "--address-word 7 --no-option-flag --no-extra-flag --no-final-flag "
            "--security-dll c:\\keys\\ecu.dll")
            .record(100);

    EXPECT_EQ(4u, record.protocol);
    EXPECT_EQ(2u, record.protocolOption);
    EXPECT_FALSE(record.optionFlag);
    EXPECT_EQ(9600u, record.kLineBaudRate);
    EXPECT_EQ(500000u, record.canBaudRate);
    EXPECT_EQ(0x7E0u, record.canRequestId);
    EXPECT_EQ(0x7E8u, record.canResponseId);
    EXPECT_EQ(0x10, record.addressByte1);
    EXPECT_EQ(0xF1, record.addressByte2);
    EXPECT_EQ(7u, record.addressWord);
    EXPECT_FALSE(record.extraFlag);
    EXPECT_EQ("c:\\keys\\ecu.dll", record.securityDll);
    EXPECT_FALSE(record.finalFlag);
}

TEST(ConnectOptions, TheKindIsAWord) {
    EXPECT_EQ(QorControlFacade::EcuConnect::SecurityAccess, parsed("--type security").connType());
    EXPECT_EQ(QorControlFacade::EcuConnect::Alternative, parsed("--type alternative").connType());
    EXPECT_THROW(parsed("--type 2"), CLI::ValidationError);
}

TEST(ConnectOptions, NumbersOutOfRangeAreErrors) {
    EXPECT_THROW(parsed("--protocol 5"), CLI::ValidationError);
    EXPECT_THROW(parsed("--address-byte1 256"), CLI::ValidationError);
    EXPECT_THROW(parsed("--can-baud fast"), CLI::ValidationError);
}
