; SPDX-License-Identifier: MIT
;
; Installs for the user who runs it, without administrator rights. Everything
; goes into one folder, besides the entry of the start menu and the one by which
; Windows lists installed programs. /S asks nothing, /D=FOLDER (last) names
; another folder. Uninstalling takes away only what was installed.
;
; makensis -DVERSION= -DSOURCE= -DLIST= -DICON= -DOUTPUT= installer.nsi
; LIST names a file that deletes everything in SOURCE.
; A 64-bit installer for a 64-bit program.
Target amd64-unicode
SetCompressor /SOLID lzma
Name "Rendal"
OutFile "${OUTPUT}"
Icon "${ICON}"
UninstallIcon "${ICON}"
RequestExecutionLevel user
InstallDir "$LOCALAPPDATA\Programs\Rendal"
ManifestDPIAware true
VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "Rendal"
VIAddVersionKey "FileDescription" "Rendal installer"
VIAddVersionKey "FileVersion" "${VERSION}.0"
VIAddVersionKey "ProductVersion" "${VERSION}.0"
VIAddVersionKey "LegalCopyright" "MIT licence"

!define LISTED "Software\Microsoft\Windows\CurrentVersion\Uninstall\Rendal"

Page directory
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

Section
  SetShellVarContext current
  SetOutPath "$INSTDIR"
  File /r "${SOURCE}/*"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  CreateShortcut "$SMPROGRAMS\Rendal.lnk" "$INSTDIR\Rendal.exe"
  WriteRegStr HKCU "${LISTED}" "DisplayName" "Rendal"
  WriteRegStr HKCU "${LISTED}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${LISTED}" "DisplayIcon" "$INSTDIR\Rendal.exe"
  WriteRegStr HKCU "${LISTED}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${LISTED}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${LISTED}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${LISTED}" "NoModify" 1
  WriteRegDWORD HKCU "${LISTED}" "NoRepair" 1
SectionEnd

Section "Uninstall"
  SetShellVarContext current
  Delete "$SMPROGRAMS\Rendal.lnk"
  DeleteRegKey HKCU "${LISTED}"
  ; Each file by its name: the user may have put some of his own beside them.
  !include "${LIST}"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
SectionEnd
