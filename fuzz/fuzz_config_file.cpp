// The configuration file "TORV_NET.cfg" of any bytes, read by the panel's start-up, which
// sets the address, the time-out and the start-up choices from it and starts talking to the
// card; then saved by "Save Config" and read by a second start-up.
//
// Input: the whole file.
// Checks: the file the panel saved reads again without a message.

#include "base/numeric.h"
#include "fuzz_support.h"
#include "panel/frm_client.h"
#include "support/fake_card.h"

#include <QFile>

using namespace torv;

namespace {

// One start-up of the panel on the card model; the messages it showed.
QStringList startUp(bool save) {
    fuzz::Platform p;
    test::FakeCard card(p);
    try {
        FrmClient panel(p);
        panel.event([&] { panel.Form_Load(); });
        p.advance(30);
        if (save) panel.event([&] { panel.cmdSaveConfig_Click(); });
        panel.closeLink();
    } catch (const test::ProgramEnded&) {
    }
    return p.messages();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::workFolder();
    setDecimalSeparator(QLatin1Char('.'));
    {
        QFile file(FrmClient::ConfigFileName);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) fuzz::fault("cannot write");
        file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    }
    startUp(true);
    const QStringList second = startUp(false);
    fuzz::check(!second.join('\n').contains(QStringLiteral("Ivalid structure")),
                "the saved configuration does not read again", second.join('\n'));
    return 0;
}
