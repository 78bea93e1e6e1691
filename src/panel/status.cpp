// Real-time status: polling the card with "GetRTStatus" and showing each answer.

#include "base/format.h"
#include "base/numeric.h"
#include "base/platform.h"
#include "frm_client.h"
#include "graph/graph_store.h"
#include "link/catalogue.h"
#include "link/elements.h"

namespace torv {

namespace {
// The converter count from which the card's reading is an overload.
constexpr Int32 OverloadCount = 130001;
} // namespace

void FrmClient::cmdWeight_Click() {
    status_.statusReceived = false;
    f.cmdStart_Sample.enabled = false;
    if (f.cmdWeight.backColor == color::Green) return;

    const QString n = f.txtLastReadingNumberD.caption;
    if (!IsNumber(n) || CDbl(n) <= 0) f.txtLastReadingNumberD.caption = QStringLiteral("10");
    counters_.iBlockSize = CInt(f.txtLastReadingNumberD.caption);

    counters_.lngBlockStartTick = counters_.lngPollStartTick =
        static_cast<Int32>(p_.GetTickCount());
    ShowHideInputsLamp(true);
    f.cmdWeight.enabled = false;
    f.cmdStopSample.enabled = true;
    link_.SetTimeOutValue(link_.lngTimeOut, f.txtTimeout2.caption);
    counters_.lngReadings = 0;
    data_.rtReadingCount = 0; // the readings of an earlier run are not this run's
    f.lblA2D.visible = f.lblA2D_Data.visible = true;

    link_.req.blnRepeatRequest = true;
    link_.req.strFunctionName = fn::GetRTStatus;
    link_.req.strParameters = QStringLiteral("ID=4");
    link_.IssueRequest(link_.req.blnRepeatRequest);
    ShowRTGraph();
}

void FrmClient::DataArrival_GetRTStatus(const QString& answer) {
    changed();
    QString v;

    f.cmdWeight.backColor = color::ButtonFace;

    ShowCounters(counters_, p_.GetTickCount(), f.lblTotalReadingsD.caption,
                 f.LbLFrequencyData.caption, f.LbLCurrentFreqD.caption);

    if (Get_XML_Element_Data(p_, answer, QStringLiteral("<A2D>"), v)) {
        f.lblA2D_Data.caption = v;
        status_.lastA2DCount = a2dCountValue(v);
    }

    showErrorElements(answer);

    if (Get_XML_Element_Data(p_, answer, QStringLiteral("<OUT_STATUS>"), v)) {
        const Int16 word = statusWordValue(v);
        if (word != status_.OutStatus) {
            SetOutLampStatus(word);
            status_.OutStatus = word;
        }
    }

    if (Get_XML_Element_Data(p_, answer, QStringLiteral("<IN_STATUS>"), v)) {
        const Int16 word = statusWordValue(v);
        if (word != status_.InStatus) {
            status_.InStatus = word;
            SetInpLampStatus(word);
        }
    }

    if (Get_XML_Element_Data(p_, answer, QStringLiteral("<WEIGHT>"), v)) {
        // The overload signal is the converter count, never the weight value.
        if (status_.lastA2DCount < OverloadCount) {
            f.lblWeight.caption = QStringLiteral("Weight:");
            f.lblWT_BRUTTO.foreColor = color::Black;
            f.lblWT_BRUTTO.fontSize = f.lblTareData.fontSize;
            const double weight = StrToDbl(p_, v);
            const double tare = StrToDbl(p_, f.lblTareData.caption);
            f.lblWT_BRUTTO.caption = Format(weight - tare, QStringLiteral("0.000"));
            const auto index = static_cast<std::size_t>(counters_.lngReadings);
            data_.readings.resize(index + 1);
            data_.readings[index] = v;
            data_.readingsAllocated = true;
            data_.rtReadingCount = counters_.lngReadings;
            f.cmdShowRTGraph.enabled = true;
            if (graph && graph->realTimeGraphRuns) graph->GraphSamplingTick();
            f.chkTare.visible = true;
        } else {
            f.lblWeight.caption = QStringLiteral("Error");
            f.lblWT_BRUTTO.caption = QStringLiteral("OVERFLOW");
            f.lblWT_BRUTTO.foreColor = color::Red;
            f.lblWT_BRUTTO.fontSize = 12;
            f.chkTare.visible = false;
        }
    }

    if (Get_XML_Element_Data(p_, answer, QStringLiteral("<INTEGRATION>"), v)) {
        f.txtIntegration.caption = v;
        // Window events are not let in here: the event loop serves them between two answers
        // anyway, and a click or the card's close run halfway through this answer found the
        // panel half updated (a Stop there was undone by the request below).
        status_.CurrentIntegration = statusWordValue(v);
        if (status_.CurrentIntegration != 0) f.CmdShowGraph.enabled = true;
    }

    if (Get_XML_Element_Data(p_, answer, QStringLiteral("<MAXIMUM_LOAD>"), v)) {
        setpoints_.MaximumLoad = StrToDbl(p_, v);
        f.LbLMaxWGTdata.caption = numberText(setpoints_.MaximumLoad);
    }

    if (Get_XML_Element_Data(p_, answer, QStringLiteral("<UNIT>"), v))
        f.lblUnitNameWGT.caption = f.lblUnitNameTare.caption = GetInterUnit(v);

    status_.statusReceived = true;
    if (Get_XML_Element_Data(p_, answer, QStringLiteral("<SP_STATUS>"), v)) {
        status_.SpStatus = statusWordValue(v);
        SetOutLampStatus(status_.OutStatus);
    }

    link_.IssueRequest(link_.req.blnRepeatRequest);
}

void FrmClient::chkTare_Click() {
    if (f.chkTare.value == 1) {
        f.lblTareData.caption = f.lblWT_BRUTTO.caption;
        f.lblWT_BRUTTO.caption = QStringLiteral("0");
        f.chkTare.caption = QStringLiteral("Tare On");
    } else {
        f.chkTare.caption = QStringLiteral("Tare Off");
        const double tare = StrToDbl(p_, f.lblTareData.caption);
        if (tare != 0) {
            const double shown = StrToDbl(p_, f.lblWT_BRUTTO.caption);
            f.lblWT_BRUTTO.caption = Format(tare + shown, QStringLiteral("0.000"));
        }
        f.lblTareData.caption = QStringLiteral("0");
    }
}

} // namespace torv
