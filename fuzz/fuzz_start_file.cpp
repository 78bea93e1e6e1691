// The graph start file "Start.dat" of any bytes, read by the graph set-up form, which then
// opens the graph windows the file asks for.
//
// Input: the whole file.
// Checks: a load that returns without a value that did not read leaves a file that loads
// again without a message and gives the same parameters.

#include "base/numeric.h"
#include "fuzz_support.h"
#include "graph/frm_start.h"
#include "graph/graph_fakes.h"
#include "graph/graph_store.h"

#include <QFile>

using namespace torv;

namespace {

bool sameParameters(const GraphParameters& a, const GraphParameters& b) {
    return a.leftCardName == b.leftCardName && a.cardNumber == b.cardNumber &&
           a.rightCardName == b.rightCardName && a.channelStatus == b.channelStatus &&
           a.numberOfPoints == b.numberOfPoints && a.sampling == b.sampling &&
           a.percent == b.percent && a.minMaxMiss == b.minMaxMiss && a.minMaxTime == b.minMaxTime &&
           a.bandRadius == b.bandRadius && a.round == b.round && a.timeDivision == b.timeDivision &&
           a.valueType == b.valueType;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::workFolder();
    setDecimalSeparator(QLatin1Char('.'));
    {
        QFile file(QString::fromLatin1(kStartFileName));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) fuzz::fault("cannot write");
        file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    }
    fuzz::Platform p;
    test::FakeGraphPanel panel;
    test::FakeGraphWindows windows;
    GraphStore store(p);
    store.panel = &panel;
    store.windows = &windows;
    FrmStart form(p, store);
    try {
        form.event([&] { form.Form_Load(); });
    } catch (const test::ProgramEnded&) {
        return 0; // a damaged file ends the program after its message
    }

    // A value that does not read ("Error !!!" and the next statement) leaves the file as it
    // is; otherwise the file on disk now loads quietly and gives what the form read.
    if (!p.messages().join('\n').contains(QStringLiteral("Error !!!"))) {
        GraphParameters again;
        fuzz::Platform quiet;
        try {
            LoadStartFile(quiet, QString::fromLatin1(kStartFileName), again);
        } catch (const test::ProgramEnded&) {
            fuzz::fault("the file left by a load ends the program", quiet.lastMessage());
        }
        fuzz::check(quiet.dialogs.empty(), "the file left by a load shows a message",
                    quiet.lastMessage());
        fuzz::check(sameParameters(again, store.params),
                    "the file left by a load reads differently from what the form read");
    }

    try {
        form.event([&] { form.CmdShowGraph_Click(); });
    } catch (const test::ProgramEnded&) {
    }
    return 0;
}
