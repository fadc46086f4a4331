#pragma once

/// How far a command has come that somebody waits for, and so how its send has ended.
enum class Delivery {
    taken,         ///< QOR has acknowledged or answered it
    refused,       ///< QOR has answered that it does not carry it out
    silent,        ///< it has left, and QOR has not acknowledged it in time
    hung,          ///< the same, and QOR takes no window messages at all
    lost,          ///< it has left, and then the connection, or QOR's window, was gone
    noConnection,  ///< it has not left: there was no connection, or no window
    forbidden,     ///< it has not left: the system keeps QOR's window from this process
    notBegun,      ///< it has not left: the transport was at something else (a message box)
    withdrawn,     ///< it has not left: its permit said no
    tooLong,       ///< no record can hold it
    broken         ///< the transport does not work any more
};
