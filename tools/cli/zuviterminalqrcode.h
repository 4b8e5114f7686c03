#pragma once

#include <QString>

// Draws a QR code as text for a terminal: two module rows per line with
// half-block characters, light modules as blocks so that the symbol reads on
// a dark terminal, with the standard quiet zone of four modules.
class ZuviTerminalQRCode
{
public:
    // Empty when the text cannot be encoded.
    static QString textForString(const QString &string);
};
