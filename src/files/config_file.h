#pragma once

// The client configuration file "TORV_NET.cfg": the card's address, the start-up choices of
// the output panel, the two fast-sampling settings and the graph's X-axis mode, closed by
// the marker line "OKA".

#include <QString>

namespace torv {

class Platform;

struct ClientConfig {
    QString address;              // line 1, the text of TxtIP
    QString startOutStatus = "0"; // line 2
    QString setPointCheckBoxStart = "0";
    QString startSampleTime;  // kept as read
    QString timeout = "5000"; // txtTimeout2
    QString xMode = "1";      // "1" or "2" after loading
    // The file read was not UTF-8: it is written back byte for byte in the same encoding.
    bool latin1 = false;
};

// The configuration file is never read beyond this size.
inline constexpr qint64 kConfigFileMaxBytes = 1 << 20;

// Fills `cfg` (which holds the designer defaults on entry) from the file at `path`.
// A missing file (or a path with a folder part) gives `defaultAddress` and "0" for both
// start-up choices without a message. A file that ends early or lacks its marker shows
// "Ivalid structure of the file " + path and keeps what was read; a file that exists but
// cannot be read shows a message beginning "Uneccepted Error".
void Load_Config_File(Platform& platform, const QString& path, ClientConfig& cfg,
                      const QString& defaultAddress);

// Writes the file (replacing it as a whole). A failure shows the system's error message and
// ends the program.
void Save_Config_File(Platform& platform, const QString& path, const ClientConfig& cfg);

// The file's text as Save_Config_File writes it.
QByteArray configFileText(const ClientConfig& cfg);

} // namespace torv
