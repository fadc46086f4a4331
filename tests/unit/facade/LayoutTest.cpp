// Hosts were compiled against these records: every field stands at its place, or the host and the
// library read each other's texts as numbers. Default packing; a text is 24 bytes, a list 12.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <type_traits>
#include <vector>

#include "facade/QorControlFacade.h"
#include "qorcontrol/Arrivals.h"
#include "qorcontrol/MessageBoxes.h"

// The records hold texts and so are not of the simplest kind of class, but they have no base and
// nothing virtual: the places are well defined for this compiler.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace {

using Places = std::vector<std::size_t>;

using Ecu = QorControlFacade::EcuConnect;
using Can = QorControlFacade::CanBusConnect;
using Frames = QorControlFacade::CanBusData;
using Dtc = QorControlFacade::DtcDescription;
using Kwp = QorControlFacade::KwpCommand;
using Model = QorControlFacade::ModelDescription;
using Value = QorControlFacade::ParamValue;
using Description = wex::ParamDescription;

TEST(Layout, RestsOnTheCompilersTextsListsAndMaps) {
    EXPECT_EQ(sizeof(std::string), 24u);
    EXPECT_EQ(sizeof(std::vector<double>), 12u);
    EXPECT_EQ(sizeof(Model::extra), 24u);
    EXPECT_EQ(sizeof(bool), 1u);
}

TEST(Layout, TheFacadeIsOnePointerWideWithoutVirtualOperations) {
    EXPECT_EQ(sizeof(QorControlFacade), 4u);
    EXPECT_FALSE(std::is_polymorphic<QorControlFacade>::value);
}

TEST(Layout, EcuConnectHasItsFourteenFieldsInOrder) {
    const Places places = {
        offsetof(Ecu, protocol),      offsetof(Ecu, protocolOption), offsetof(Ecu, optionFlag),
        offsetof(Ecu, kLineBaudRate), offsetof(Ecu, canBaudRate),    offsetof(Ecu, refreshPeriodMs),
        offsetof(Ecu, canRequestId),  offsetof(Ecu, canResponseId),  offsetof(Ecu, addressByte1),
        offsetof(Ecu, addressByte2),  offsetof(Ecu, addressWord),    offsetof(Ecu, extraFlag),
        offsetof(Ecu, securityDll),   offsetof(Ecu, finalFlag),
    };
    EXPECT_EQ(places, (Places{0, 4, 8, 12, 16, 20, 24, 28, 32, 33, 36, 40, 44, 68}));
    EXPECT_EQ(sizeof(Ecu), 72u);
}

TEST(Layout, ConnectionTypesAreWordsOfOneToThree) {
    EXPECT_EQ(sizeof(Ecu::ConnType), 4u);
    EXPECT_EQ(int(Ecu::Default), 1);
    EXPECT_EQ(int(Ecu::SecurityAccess), 2);
    EXPECT_EQ(int(Ecu::Alternative), 3);
}

TEST(Layout, CanBusConnectHasItsFlagsSideBySideBehindTheSetting) {
    const Places places = {offsetof(Can, busParam), offsetof(Can, firstFlag),
                           offsetof(Can, secondFlag)};
    EXPECT_EQ(places, (Places{0, 4, 5}));
    EXPECT_EQ(sizeof(Can), 8u);
}

TEST(Layout, CanBusDataIsAListOfPairs) {
    const Places places = {offsetof(Frames, items), offsetof(Frames::Item, canId),
                           offsetof(Frames::Item, value)};
    EXPECT_EQ(places, (Places{0, 0, 4}));
    EXPECT_EQ(sizeof(Frames), 12u);
    EXPECT_EQ(sizeof(Frames::Item), 8u);
    EXPECT_TRUE(std::is_signed<decltype(Frames::Item::value)>::value);
}

TEST(Layout, DtcDescriptionIsTwoNumbersAndFourTexts) {
    const Places places = {offsetof(Dtc, code),  offsetof(Dtc, status), offsetof(Dtc, text1),
                           offsetof(Dtc, text2), offsetof(Dtc, text3),  offsetof(Dtc, text4)};
    EXPECT_EQ(places, (Places{0, 4, 8, 32, 56, 80}));
    EXPECT_EQ(sizeof(Dtc), 104u);
}

TEST(Layout, KwpCommandEndsWithAByte) {
    const Places places = {offsetof(Kwp, service), offsetof(Kwp, data), offsetof(Kwp, failed)};
    EXPECT_EQ(places, (Places{0, 4, 28}));
    EXPECT_EQ(sizeof(Kwp::failed), 1u);
    EXPECT_EQ(sizeof(Kwp), 32u);
}

TEST(Layout, ModelDescriptionHasAnOptionBehindEachFile) {
    const Places places = {
        offsetof(Model, modelType), offsetof(Model, model),     offsetof(Model, modelOption),
        offsetof(Model, hex),       offsetof(Model, hexOption), offsetof(Model, csv),
        offsetof(Model, csvOption), offsetof(Model, extra),
    };
    EXPECT_EQ(places, (Places{0, 4, 28, 32, 56, 60, 84, 88}));
    EXPECT_EQ(sizeof(Model), 112u);
}

TEST(Layout, ParamValueIsANameAndAList) {
    const Places places = {offsetof(Value, name), offsetof(Value, values)};
    EXPECT_EQ(places, (Places{0, 24}));
    EXPECT_EQ(sizeof(Value), 36u);
}

TEST(Layout, AnArrivalIsTwoWordsAValueAndATime) {
    using qorcontrol::Arrival;
    const Places places = {offsetof(Arrival, name), offsetof(Arrival, missed),
                           offsetof(Arrival, value), offsetof(Arrival, timeMs)};
    EXPECT_EQ(places, (Places{0, 4, 8, 16}));
    EXPECT_EQ(sizeof(Arrival), 24u);
    EXPECT_EQ(sizeof(qorcontrol::Arrivals), 4u);
}

TEST(Layout, AQorBoxIsFourWordsAFlagAndTwoTexts) {
    using Box = qorcontrol::QorBox;
    using Policy = qorcontrol::BoxPolicy;
    const Places places = {offsetof(Box, number), offsetof(Box, type),   offsetof(Box, choice),
                           offsetof(Box, openMs), offsetof(Box, isOpen), offsetof(Box, caption),
                           offsetof(Box, text)};
    EXPECT_EQ(places, (Places{0, 4, 8, 12, 16, 20, 44}));
    EXPECT_EQ(sizeof(Box), 68u);
    EXPECT_EQ(sizeof(Policy), 4u);
    EXPECT_EQ(int(Policy::show), 0);
    EXPECT_EQ(int(Policy::answer), 1);
    EXPECT_EQ(int(Policy::ask), 2);
}

TEST(Layout, ParamDescriptionIsANameFourTextsAWordAndAFlag) {
    const Places places = {
        offsetof(Description, name),        offsetof(Description, text1),
        offsetof(Description, text2),       offsetof(Description, text3),
        offsetof(Description, text4),       offsetof(Description, value),
        offsetof(Description, threeArrays),
    };
    EXPECT_EQ(places, (Places{0, 24, 48, 72, 96, 120, 124}));
    EXPECT_EQ(sizeof(Description), 128u);
}

}  // namespace
