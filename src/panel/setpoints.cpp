// Set points of outputs 11..14 and the single set point of output 10.

#include "frm_client.h"

namespace torv {

void FrmClient::InitSetPoint_11_14() {}
void FrmClient::InitSetPointLocation_11_14() {}
void FrmClient::ChkSetPointNew_Click(int) {}
void FrmClient::txtSetPointNew_Change(int) {}
void FrmClient::txtSetPointNew_GotFocus(int) {}
void FrmClient::txtSetPointNew_KeyPress(int, int) {}
void FrmClient::DoSetPointTest(int, bool& ok) {
    ok = true;
}
void FrmClient::SetSetPoints_11_14(int) {}
void FrmClient::GetParamForSetSetPoints(QString&) {}
void FrmClient::DataArrival_GetSetpoints() {}
void FrmClient::DataArrival_SetSetpoints() {}
void FrmClient::Show_SP_status(int) {}
void FrmClient::ChkSetPoint_Click() {}
void FrmClient::InitSetPoint(int, bool) {}
void FrmClient::txtSetPoint_Change() {}
void FrmClient::txtSetPoint_GotFocus() {}
void FrmClient::txtSetPoint_KeyPress(int) {}

} // namespace torv
