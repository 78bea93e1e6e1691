// Analog output, integration and the channel switch.

#include "frm_client.h"

namespace torv {

void FrmClient::cmdSetD2A_Click() {}
void FrmClient::txtSetD2A_Change() {}
void FrmClient::txtSetD2A_GotFocus() {}
void FrmClient::txtSetD2A_KeyPress(int) {}
void FrmClient::DataArrival_SetD2A() {}
void FrmClient::IsHex(QString&, bool& ok) {
    ok = false;
}
void FrmClient::cmbSetIntegr_Click() {}
void FrmClient::SetNewIntegration(Int16) {}
void FrmClient::DataArrival_SetIntegration() {}
void FrmClient::cmdChan_Click(int) {}
void FrmClient::cmdChanSwitch_Click() {}
void FrmClient::DataArrival_CH_Switch() {}
void FrmClient::SetFrequencyUnvisible(bool visible) {
    f.txtFrequency.visible = visible;
    f.LbLFrequency.visible = visible;
    f.LbLFrequencyData.visible = visible;
    f.LbLCurFrequency.visible = visible;
    f.LbLCurrentFreqD.visible = visible;
}

} // namespace torv
