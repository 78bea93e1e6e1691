// The main panel on the scripted platform, with one function's answers replaced by arbitrary
// bytes: the operator's clicks bring the panel to ask for it, the card model answers the rest.
// Run-time errors, message boxes and the program ending on a No are ordinary outcomes; a
// crash, a sanitizer report, a hang, or a box opened inside another is a fault.
//
// Input: the function whose answers are replaced, flags (wrap the bytes in the function's
// tags, replace only the first answer, the answer to the abnormal-reading and "Not Number"
// questions, "," as the decimal separator), up to eight clicks, then the answer's bytes.

#include "base/numeric.h"
#include "fuzz_support.h"
#include "link/catalogue.h"
#include "panel/frm_client.h"
#include "support/fake_card.h"

#include <vector>

using namespace torv;

namespace {

// Clicks as the window delivers them: only on a control that is enabled and shown.
void click(FrmClient& panel, const Control& c, const std::function<void()>& handler) {
    if (c.enabled && c.visible) panel.event(handler);
}

void operatorAction(FrmClient& panel, std::uint8_t action) {
    FrmClientForm& f = panel.f;
    const int k = action >> 4;
    switch (action % 12) {
    case 0:
        click(panel, f.cmdWeight, [&] { panel.cmdWeight_Click(); });
        break;
    case 1:
        click(panel, f.cmdSetOutOn[1 + k % 14], [&] { panel.cmdSetOutOn_Click(1 + k % 14); });
        break;
    case 2: {
        Control& box = f.ChkSetPointNew[11 + k % 4];
        click(panel, box, [&] { setValue(box, box.value ? 0 : 1); });
        break;
    }
    case 3:
        f.txtSetD2A.caption = QString::number(k * 17);
        click(panel, f.cmdSetD2A, [&] { panel.cmdSetD2A_Click(); });
        break;
    case 4:
        f.cmbSetIntegr.listIndex =
            f.cmbSetIntegr.items.isEmpty() ? -1 : k % f.cmbSetIntegr.items.size();
        click(panel, f.cmbSetIntegr, [&] { panel.cmbSetIntegr_Click(); });
        break;
    case 5:
        click(panel, f.cmdChan[1 + k % 2], [&] { panel.cmdChan_Click(1 + k % 2); });
        break;
    case 6:
        click(panel, f.cmdChanSwitch, [&] { panel.cmdChanSwitch_Click(); });
        break;
    case 7:
        click(panel, f.cmdStart_Sample, [&] { panel.cmdStart_Sample_Click(); });
        break;
    case 8:
        click(panel, f.cmdStopSample, [&] { panel.cmdStopSample_Click(); });
        break;
    case 9:
        click(panel, f.ChkSetPoint, [&] { setValue(f.ChkSetPoint, f.ChkSetPoint.value ? 0 : 1); });
        break;
    case 10:
        click(panel, f.chkTare, [&] { setValue(f.chkTare, f.chkTare.value ? 0 : 1); });
        break;
    default: {
        const int index = 11 + k % 4;
        f.txtSetPointNew[index].caption = QString::number(k * 37.5);
        click(panel, f.txtSetPointNew[index], [&] { panel.txtSetPointNew_KeyPress(index, 13); });
    }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::workFolder();
    fuzz::Input in(data, size);
    const QString& function = *fuzz::kFunctions[in.choose(11)];
    const std::uint8_t flags = in.byte();
    const bool wrap = flags & 1, once = flags & 2;
    const int actionCount = in.choose(9);
    std::vector<std::uint8_t> actions;
    for (int i = 0; i < actionCount; ++i)
        actions.push_back(in.byte());
    const QByteArray bytes = in.rest();
    const QString answer =
        wrap ? QStringLiteral("<%1>%2</%1>").arg(function, QString::fromLatin1(bytes))
             : QString::fromLatin1(bytes);

    setDecimalSeparator(flags & 8 ? QLatin1Char(',') : QLatin1Char('.'));
    fuzz::Platform p;
    p.defaultAnswer = flags & 4;
    test::FakeCard card(p);
    int replaced = 0;
    card.respond = [&](const test::CardRequest& r) {
        if (r.function == function && (!once || replaced == 0)) {
            ++replaced;
            return answer;
        }
        return card.sim.answer(r.function, r.body);
    };
    try {
        FrmClient panel(p);
        panel.f.TxtIP.caption = QStringLiteral("10.0.0.2");
        panel.layOutFrames();
        panel.f.lblTareData.caption = QStringLiteral("0");
        if (actionCount == 0) operatorAction(panel, 0); // at least the status poll
        for (const std::uint8_t action : actions) {
            operatorAction(panel, action);
            p.advance(15);
        }
        p.advance(120);
        panel.closeLink();
    } catch (const test::ProgramEnded&) {
        // The operator answered No to a question that ends the program: an ordinary outcome.
    }
    setDecimalSeparator(QLatin1Char('.'));
    return 0;
}
