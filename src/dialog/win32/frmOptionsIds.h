// Resource ids of the settings dialog, shared by the resource script and the dialog
// procedure. A field's control is 1000 plus its place in options::Field, its label 1100 plus it.
#pragma once

#define IDD_frmOptions 100

#define IDC_cboReaderType 1000
#define IDC_cboPort 1001
#define IDC_cboBaudRate 1002
#define IDC_cboParity 1003
#define IDC_cboDataBits 1004
#define IDC_cboStopBits 1005
#define IDC_cboFlowControl 1006
#define IDC_txtTimeOut 1007
#define IDC_txtSleepTime 1008
#define IDC_txtMarkCutOff 1009
#define IDC_txtMarkDiscrimination 1010
#define IDC_txtRecognitionThreshold 1011
#define IDC_chkDuplex 1012
#define IDC_chkFeeder 1013
#define IDC_chkRejecter 1014
#define IDC_chkBarcode 1015
#define IDC_chkPrinter 1016
#define IDC_chkReaderGrade 1017
#define IDC_chkWindowing 1018
#define IDC_cmdLocate 1019
#define IDC_cmdFirmware 1020

#define IDC_lblReaderType 1100
#define IDC_lblPort 1101
#define IDC_lblBaudRate 1102
#define IDC_lblParity 1103
#define IDC_lblDataBits 1104
#define IDC_lblStopBits 1105
#define IDC_lblFlowControl 1106
#define IDC_lblTimeOut 1107
#define IDC_lblSleepTime 1108
#define IDC_lblMarkCutOff 1109
#define IDC_lblMarkDiscrimination 1110
#define IDC_lblRecognitionThreshold 1111

#define IDC_lblThresholdRange 1200
#define IDC_cmdDefaults 1201
#define IDC_fraLine 1202
#define IDC_fraReading 1203
#define IDC_fraOptions 1204
