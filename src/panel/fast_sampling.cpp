// Fast-sampling sessions, the stop button, the data file and the history viewer.

#include "frm_client.h"

namespace torv {

void FrmClient::cmdStart_Sample_Click() {}
void FrmClient::InitStart_Sample_Parameters() {}
void FrmClient::DataArrival_StartSample() {}
void FrmClient::DataArrival_FastSampling() {}
void FrmClient::DataArrival_StopSample() {}
void FrmClient::GetVarSizeArray(const QString&, Int32, Int32&, Int32, Int32, Int32, Int32,
                                bool& ok) {
    ok = false;
}
void FrmClient::ShowFastSamplingCurrentWeight() {}
void FrmClient::cmdStopSample_Click() {}
void FrmClient::cmdBrowse_Click() {}
void FrmClient::CmdShowGraph_Click() {}
QString FrmClient::dataFilePath() {
    return paths.fullPath.isEmpty() ? f.txtHistFileName.caption : paths.fullPath;
}
TrailerInfo FrmClient::trailerInfo() const {
    return {f.txtIntegration.caption, f.lblUnitNameTare.caption, xMode};
}

} // namespace torv
