// The variables that more than one module uses, and the state of the transfer procedures, which observers of a session
// read. A module's own variables stand in its header. The assignment shared = SharedVariables() gives them the values of a new
// process.
#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <string>

// A firmware image: always handled whole, in XMODEM blocks.
constexpr std::int32_t imageSize = 0x3C000;
constexpr std::int32_t blockSize = 128;
constexpr std::int32_t blockCount = imageSize / blockSize;

enum class Language { japanese, english };

namespace platform {
class SerialPort;
}

// How an operation of the operator has ended: a write, a save, or a write with verification.
enum class Outcome {
    none,      // not yet
    succeeded, // the unit holds the file, and a verification has read it back; or the saved file holds the unit's image
    failed,    // it broke off, or what arrived is not the whole image or not the same one
    refused,   // it did not begin: another model, or the unit refused the start
    cancelled, // by the operator
    portLost,  // the serial port failed
};

struct SharedVariables {
    // The device link, written by link/.
    platform::SerialPort* serialPort = nullptr; // the one serial port, from fncOpenPort to subClosePort
    Bytes replyBytes;                           // the stored bytes of the last reply
    bool commBusy = false;                      // an exchange is running, or a failed one has left this set
    std::string unitStateText;                  // the unit's state, two characters
    std::int32_t sensorCount = 0;               // sensors connected to the unit

    // The command and the result code for which the start-up ends the program without a box; written by startup/.
    struct Refusal {
        std::string command, result;
    } refusal;

    // Configuration, written by configuration/ and startup/.
    std::string bpsText;            // bit/s, always 38400
    std::int16_t comPortNumber = 0; // COM port number: Setting.INI's, or the operator's choice

    // What is connected and what is loaded, as the rows of the main window show it.
    std::int16_t targetUnit = 0;               // unit that the commands address: 1 the amplifier, 0 the interface unit
    std::string ampTypeName, ampVersionText;   // row 0, the amplifier: model name and version; startup/
    std::string ifuTypeName, ifuVersionText;   // row 1, the interface unit: the same; startup/
    std::string fileTypeName, fileVersionText; // row 2, the loaded file: the same; firmware/

    // Firmware. Both images have one element more than a transfer sends; it stays 0.
    std::string loadFilePath, saveFilePath;     // paths chosen last in the open and the save dialog
    Bytes firmwareImage = Bytes(imageSize + 1); // the loaded file, source of a write; firmware/
    bool fileLoaded = false;                    // a file of the right size is in firmwareImage; firmware/
    Bytes readBackImage = Bytes(imageSize + 1); // bytes received from the unit; transfer/

    // The transfer procedures, written by transfer/.
    std::int16_t commRetry = 0; // number of the present try of an operation; from 3 on, the unit's result code "1234"
                                // has a box
    std::int32_t programState = 0;   // state of the procedures, see transfer/programState.h
    bool stepBusy = false;           // a step function is running
    bool verifying = false;          // the write is followed by a verification; the main window stays disabled
    Outcome outcome = Outcome::none; // of the present operation, or the last one

    // The language, and texts in it, written by ui/.
    Language language = Language::english;
    std::string screenFontName;
    std::string binFileFilter; // filter of the file dialogs
    std::string portSetupText; // shown at start-up when no unit answers
};

extern SharedVariables shared;
