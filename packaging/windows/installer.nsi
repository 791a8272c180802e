; Installer of Tessaly NDI VEXA for Windows x64, for all users of the machine.
; packaging/windows/package gives VERSION, SIZE_KIB, OUTPUT, ICON, LICENCE, INSTALL_LIST and REMOVE_LIST.
; Silent: setup.exe /S [/D=C:\folder], and uninstall.exe /S.

Target amd64-unicode
Unicode true
SetCompressor /SOLID lzma
ManifestSupportedOS all
ManifestLongPathAware true
ManifestDPIAware true
RequestExecutionLevel admin
AllowSkipFiles off

!include MUI2.nsh

!define PRODUCT "Tessaly NDI VEXA"
!define COMPANY "Tessaly"
!define PROGRAM "TessalyNDIVexa.exe"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\TessalyNDIVexa"

Name "${PRODUCT}"
OutFile "${OUTPUT}"
BrandingText "${PRODUCT} ${VERSION}"
InstallDir "$PROGRAMFILES64\${PRODUCT}"
ShowInstDetails nevershow
ShowUninstDetails nevershow

VIProductVersion "${VERSION}.0"
VIFileVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "${PRODUCT}"
VIAddVersionKey "CompanyName" "${COMPANY}"
VIAddVersionKey "FileDescription" "${PRODUCT} installer"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "${COMPANY}"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
!define MUI_FINISHPAGE_RUN "$INSTDIR\${PROGRAM}"
!insertmacro MUI_PAGE_LICENSE "${LICENCE}"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

Function .onInit
    SetRegView 64
    SetShellVarContext all
    ; An update goes where the program is already, unless /D= names another place.
    StrCmp $INSTDIR "$PROGRAMFILES64\${PRODUCT}" 0 done
    ReadRegStr $0 HKLM "${UNINSTALL_KEY}" "InstallLocation"
    StrCmp $0 "" done
    StrCpy $INSTDIR $0
done:
FunctionEnd

Section
    ; What an earlier version installed goes first, so that no file of it stays behind.
    ReadRegStr $0 HKLM "${UNINSTALL_KEY}" "InstallLocation"
    StrCmp $0 "" fresh
    IfFileExists "$0\uninstall.exe" 0 fresh
    ExecWait '"$0\uninstall.exe" /S _?=$0' $1
    IntCmp $1 0 removed
    DetailPrint "The earlier version could not be removed."
    SetErrorLevel 2
    Abort
removed:
    Delete "$0\uninstall.exe"
    RMDir "$0"
fresh:
    !include "${INSTALL_LIST}"
    SetOutPath "$INSTDIR"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    CreateShortcut "$SMPROGRAMS\${PRODUCT}.lnk" "$INSTDIR\${PROGRAM}"

    WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "${PRODUCT}"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "Publisher" "${COMPANY}"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\${PROGRAM}"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "EstimatedSize" ${SIZE_KIB}
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Function un.onInit
    SetRegView 64
    SetShellVarContext all
FunctionEnd

Section "Uninstall"
    SetOutPath "$TEMP"
    !include "${REMOVE_LIST}"
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
    Delete "$SMPROGRAMS\${PRODUCT}.lnk"
    DeleteRegKey HKLM "${UNINSTALL_KEY}"
SectionEnd
