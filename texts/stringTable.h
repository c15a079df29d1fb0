// The numbered texts: Japanese at the id, English at the id + englishOffset.
#pragma once

#include <cstdint>
#include <string>

namespace textId {
// Font and file filter.
constexpr std::int32_t fontName = 101;
constexpr std::int32_t binFileFilter = 103;
// Main window.
constexpr std::int32_t mainTitle = 1001;
constexpr std::int32_t presentHeading = 1002;
constexpr std::int32_t rewritingHeading = 1003;
constexpr std::int32_t loadFile = 1004;
constexpr std::int32_t savePresent = 1006;
constexpr std::int32_t startUpgrade = 1007;
constexpr std::int32_t end = 1008;
// Start-up window.
constexpr std::int32_t cancelStart = 1102;
constexpr std::int32_t setPort = 1103;
constexpr std::int32_t speed = 1104;
constexpr std::int32_t port = 1105;
// Progress dialog.
constexpr std::int32_t waitTitle = 1201;
constexpr std::int32_t cancelWait = 1204;
// Errors.
constexpr std::int32_t receiveTimeout = 2002;
constexpr std::int32_t shutDownByCancel = 2003;
constexpr std::int32_t applicationError = 2004;
constexpr std::int32_t portSetup = 2007;
constexpr std::int32_t portDoesNotOpen = 2008;
constexpr std::int32_t communicationError = 2011;
constexpr std::int32_t fileNotAdapted = 2013;
constexpr std::int32_t sensorNotChecked = 2014;
constexpr std::int32_t notOnlyOneSensor = 2015;
constexpr std::int32_t unexpected = 2017;
constexpr std::int32_t portMissing1 = 2018;
constexpr std::int32_t portMissing2 = 2019;
constexpr std::int32_t iniFileMissing = 2020;
constexpr std::int32_t unitNotConnected = 2021;
// Notices.
constexpr std::int32_t alreadyStarted = 3023;
constexpr std::int32_t portNotEffective1 = 3031;
constexpr std::int32_t portNotEffective2 = 3032;
// Results of a transfer.
constexpr std::int32_t succeed = 4001;
constexpr std::int32_t failed = 4002;
constexpr std::int32_t verifyFailed = 4003;
constexpr std::int32_t formatTest = 4004;
constexpr std::int32_t rawWriteFailed = 4005; // title of the box that shows the failure's description
// Notices of a read.
constexpr std::int32_t silentNothingSaved = 4011;
constexpr std::int32_t silentNotVerified = 4012;
constexpr std::int32_t lostNothingSaved = 4013;
constexpr std::int32_t lostNotVerified = 4014;
// Captions and names for screen readers that have no number in the windows' own groups.
constexpr std::int32_t verification = 4101;
constexpr std::int32_t verificationRuns = 4102;
constexpr std::int32_t updating1 = 4103;
constexpr std::int32_t updating2 = 4104;
constexpr std::int32_t amplifier = 4105;
constexpr std::int32_t interfaceUnit = 4106;
constexpr std::int32_t file = 4107;
constexpr std::int32_t model = 4108;
constexpr std::int32_t version = 4109;
constexpr std::int32_t progress = 4110;
// Of the box that replaces a box without a text.
constexpr std::int32_t boxFailed = 4201; // its title
constexpr std::int32_t failureNumber = 4202;
constexpr std::int32_t failureContent = 4203;
// The command line. %1 to %3 stand for what filledText() puts there.
constexpr std::int32_t breakOffMeans = 4301;
constexpr std::int32_t brokenOff = 4302;
constexpr std::int32_t portUnusable = 4303;
constexpr std::int32_t portHeldBy = 4304;
constexpr std::int32_t portListAdvice = 4305;
constexpr std::int32_t noUnitAnswers = 4306;
constexpr std::int32_t unitRefuses = 4307;
constexpr std::int32_t unitSilent = 4308;
constexpr std::int32_t unitUnknown = 4309;
constexpr std::int32_t fileSize = 4310;
constexpr std::int32_t fileUnknown = 4311;
constexpr std::int32_t fileExists = 4312;
constexpr std::int32_t written = 4313;
constexpr std::int32_t unchanged = 4314;
constexpr std::int32_t saved = 4315;
constexpr std::int32_t transferFailed = 4316;
constexpr std::int32_t typeFileMissing = 4317;
constexpr std::int32_t typeFileWrong = 4318;
constexpr std::int32_t notChecked = 4319;
constexpr std::int32_t answeredOk = 4320;
constexpr std::int32_t answeredCancel = 4321;
constexpr std::int32_t portOpens = 4322;
constexpr std::int32_t noPorts = 4323;
constexpr std::int32_t ended = 4324;
constexpr std::int32_t breakOffReadMeans = 4325;
constexpr std::int32_t notVerified = 4326;
} // namespace textId

constexpr std::int32_t englishOffset = 500;

// The text of an id, Japanese or English. Fails with failureNumber::noSuchText for an id without a text.
std::string loadText(std::int32_t id);
