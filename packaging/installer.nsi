; The Windows installer. Puts the plug-in into a folder of its own below the one that the host's products share, says
; whether the codec library can be found, and switches the diagnostic log. Never contains the codec library itself.
;
; Compiled by packaging/build_installer.cmake, which defines
;   VERSION      the project's version, for example 1.2.3
;   STAGE        folder with the files to install (plain release files and texts, nothing else)
;   OUTFILE      the installer to write
;   HAVE_TOOL    when STAGE holds importer_host.exe
;   SIGN         the program that signs the uninstaller, in place, when this installer is going to be signed
;
; Command line of the installer (upper or lower case):
;   /?                    lists these options and installs nothing
;   /S                    no windows, no questions
;   /D=folder             the plug-in's own folder; must come last, without quotation marks even with blanks
;   /LOG=1, /LOG=0        diagnostic log of the plug-in on or off for this account; without it the switch stays as it is
;   /TOOL=1, /TOOL=0      with or without importer_host.exe; without it as before, and on a first installation with it
;   /REQUIRECODEC         refuse to install when the codec library cannot be found
;   /SETUPLOG=file        where setup writes what it did (default: %TEMP%\ImporterOrvantis-setup.log)
; of the uninstaller:
;   /?, /S, /SETUPLOG=file    the same (default: %TEMP%\ImporterOrvantis-uninstall.log)
;   /PURGE                also remove the log switch and the log files of this account; without it, the log is
;                         switched off only if setup has switched it on
;   /UPGRADE              another setup goes on from here: the log switch stays as it is
; Exit codes of both:
;   0  done (a codec library that was not found is reported in setup's log and, with windows, by a message)
;   1  cancelled by the user
;   2  not completed: a file or key could not be written or removed
;   3  the plug-in is in use by a running host; nothing was changed
;   4  an argument is wrong; nothing was changed
;   5  /REQUIRECODEC was given and there is no codec library; nothing was changed

Unicode true
Target amd64-unicode    ; the host and the plug-in are 64-bit, and so are the folders and keys that setup must see
SetCompressor /SOLID lzma
SetDateSave off         ; equal input gives an equal installer
RequestExecutionLevel admin
ManifestDPIAware true
AllowSkipFiles off      ; a plug-in without one of its files is not an installation

!include "MUI2.nsh"
!include "LogicLib.nsh"
!include "FileFunc.nsh"
!include "WordFunc.nsh"
!include "Sections.nsh"
!include "nsDialogs.nsh"

!define PRODUCT "Orvantis importer"
!define PLUGIN "ImporterOrvantis.prm"
!define TOOL "importer_host.exe"
!define CODEC "orvantis_common64.dll"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\ImporterOrvantis"
!define MSI_KEY "Software\Orvantis\Importer"
!define SWITCH_KEY "Software\Orvantis"
!define SWITCH_VALUE "EnableAdobeLog"
!define SWITCHED_BY_SETUP "SwitchedOnBySetup"   ; beside the switch, so that it belongs to the same account
!define MENU "$SMPROGRAMS\Orvantis importer"

!define EXIT_FAILED 2
!define EXIT_IN_USE 3
!define EXIT_USAGE 4
!define EXIT_NO_CODEC 5

Name "${PRODUCT} ${VERSION}"
OutFile "${OUTFILE}"
!ifdef SIGN
    !uninstfinalize '"${SIGN}" "%1" uninstall.exe' = 0
!endif
BrandingText "${PRODUCT} ${VERSION}"
ShowInstDetails show
ShowUninstDetails show

VIProductVersion "${VERSION}.0"
VIFileVersion "${VERSION}.0"
VIAddVersionKey "CompanyName" "Orvantis"
VIAddVersionKey "FileDescription" "${PRODUCT} setup"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "Copyright (c) 2026 Orvantis Importer Developers"
VIAddVersionKey "ProductName" "${PRODUCT}"
VIAddVersionKey "ProductVersion" "${VERSION}"

Var Arguments
Var SetupLog
Var FoundFolder     ; where the host looks, as far as setup can tell; the plug-in's own folder in it
Var FoundNote       ; how it was found
Var CodecPath       ; empty: not found
Var CodecText       ; one or two sentences for the user
Var LogSwitch       ; "1" on, "0" off, "" leave
Var LogCheckbox

; ---------------------------------------------------------------------------------------------------------------------
; Pages

!define MUI_ABORTWARNING
!define MUI_ICON "artwork/setup.ico"
!define MUI_UNICON "artwork/setup.ico"
!define MUI_WELCOMEFINISHPAGE_BITMAP "artwork/welcome.bmp"
!define MUI_UNWELCOMEFINISHPAGE_BITMAP "artwork/welcome.bmp"
!define MUI_HEADERIMAGE
!define MUI_HEADERIMAGE_RIGHT
!define MUI_HEADERIMAGE_BITMAP "artwork/header.bmp"
!define MUI_WELCOMEPAGE_TEXT "This installs the importer plug-in for AVI files coded with the Orvantis lossless codec.$\r$\n$\r$\nClose Premiere Pro, After Effects and Media Encoder before you go on.$\r$\n$\r$\nThe codec itself is a separate product and is not part of this package."
!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_LICENSE "${STAGE}/LICENSE.txt"
!insertmacro MUI_PAGE_COMPONENTS
!define MUI_DIRECTORYPAGE_TEXT_TOP "Setup proposes the folder in which the host looks for importers. Change it only if your host uses another one. The plug-in gets a folder $\"Orvantis$\" of its own there."
!insertmacro MUI_PAGE_DIRECTORY
Page custom showOptions leaveOptions
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_TEXT "The plug-in is in$\r$\n$INSTDIR$\r$\n$\r$\n$CodecText"
!ifdef HAVE_TOOL
    !define MUI_FINISHPAGE_RUN
    !define MUI_FINISHPAGE_RUN_TEXT "&Check this computer: will the host find everything?"
    !define MUI_FINISHPAGE_RUN_FUNCTION checkComputer
    !define MUI_PAGE_CUSTOMFUNCTION_SHOW showFinish
!endif
!insertmacro MUI_PAGE_FINISH

!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_COMPONENTS
!insertmacro MUI_UNPAGE_INSTFILES

!insertmacro MUI_LANGUAGE "English"

; ---------------------------------------------------------------------------------------------------------------------
; Functions that the installer and the uninstaller share

!macro SharedFunctions un

; Starts setup's log. $SetupLog holds its path.
Function ${un}startSetupLog
    Push $0
    Push $1
    Push $2
    Push $3
    Push $4
    Push $5
    Push $6
    Push $7
    ClearErrors
    FileOpen $7 $SetupLog w
    ${IfNot} ${Errors}
        ${GetTime} "" "L" $0 $1 $2 $3 $4 $5 $6
        FileWriteUTF16LE /BOM $7 "$2-$1-$0 $4:$5:$6 ImporterOrvantis ${VERSION} ${un}setup$\r$\n"
        FileClose $7
    ${EndIf}
    ClearErrors
    Pop $7
    Pop $6
    Pop $5
    Pop $4
    Pop $3
    Pop $2
    Pop $1
    Pop $0
FunctionEnd

; Takes one line from the stack and writes it to setup's log and to the page with the details.
Function ${un}logLine
    Exch $0
    Push $1
    DetailPrint "$0"
    ClearErrors
    FileOpen $1 $SetupLog a
    ${IfNot} ${Errors}
        FileSeek $1 0 END
        FileWriteUTF16LE $1 "$0$\r$\n"
        FileClose $1
    ${EndIf}
    ClearErrors
    Pop $1
    Pop $0
FunctionEnd

; Takes a file's path from the stack, gives back "1" when a process holds that file, else "0". Windows lets nobody open
; a library for writing while it is loaded.
Function ${un}fileInUse
    Exch $0
    Push $1
    ${If} ${FileExists} "$0"
        ClearErrors
        FileOpen $1 "$0" a
        ${If} ${Errors}
            StrCpy $0 "1"
        ${Else}
            FileClose $1
            StrCpy $0 "0"
        ${EndIf}
        ClearErrors
    ${Else}
        StrCpy $0 "0"
    ${EndIf}
    Pop $1
    Exch $0
FunctionEnd

; Takes a folder from the stack. Returns when its plug-in and tool are free; else asks to close the host, and ends setup
; with ${EXIT_IN_USE} when the user gives up or cannot be asked.
Function ${un}waitForHost
    Exch $0
    Push $1
    Push $2
    ${Do}
        StrCpy $2 "${PLUGIN}"
        Push "$0\$2"
        Call ${un}fileInUse
        Pop $1
        ${If} $1 == "0"
            StrCpy $2 "${TOOL}"
            Push "$0\$2"
            Call ${un}fileInUse
            Pop $1
        ${EndIf}
        ${If} $1 == "0"
            ${ExitDo}
        ${EndIf}
        Push "In use or write-protected: $0\$2. Close Premiere Pro, After Effects and Media Encoder, then run setup again."
        Call ${un}logLine
        ${If} ${Cmd} `MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$2 in$\r$\n$0$\r$\nis in use or write-protected.$\r$\n$\r$\nClose Premiere Pro, After Effects and Media Encoder, then choose Retry." /SD IDCANCEL IDCANCEL`
            SetErrorLevel ${EXIT_IN_USE}
            Push "Nothing was changed."
            Call ${un}logLine
            Quit
        ${EndIf}
    ${Loop}
    Pop $2
    Pop $1
    Pop $0
FunctionEnd

!macroend

!insertmacro SharedFunctions ""
!insertmacro SharedFunctions "un."

!macro Log text
    Push `${text}`
    !ifdef __UNINSTALL__
        Call un.logLine
    !else
        Call logLine
    !endif
!macroend
!define Log `!insertmacro Log`

; ---------------------------------------------------------------------------------------------------------------------
; Where the host looks for importers

; Takes a key of HKLM whose sub-keys are versions, gives back the folder that the highest version records, without a
; trailing backslash; "" when none does.
Function newestPluginFolder
    Exch $0     ; the key
    Push $1     ; index
    Push $2     ; version
    Push $3     ; its folder
    Push $4     ; best version so far
    Push $5     ; its folder
    Push $6
    StrCpy $4 "0"
    StrCpy $5 ""
    StrCpy $1 0
    ${Do}
        EnumRegKey $2 HKLM "$0" $1
        ${If} $2 == ""
            ${ExitDo}
        ${EndIf}
        IntOp $1 $1 + 1
        IntOp $6 $2 + 0
        ${If} $6 < 1
            ${Continue}     ; not a version
        ${EndIf}
        ReadRegStr $3 HKLM "$0\$2" "CommonPluginInstallPath"
        ExpandEnvStrings $3 "$3"
        ; Only an absolute path is taken: a drive or a share.
        StrCpy $6 $3 2
        ${If} $6 != "\\"
            StrCpy $6 $3 1 1
            ${If} $6 != ":"
                ${Continue}
            ${EndIf}
        ${EndIf}
        ${VersionCompare} "$2" "$4" $6
        ${If} $6 == 1
            StrCpy $4 $2
            StrCpy $5 $3
        ${EndIf}
    ${Loop}
    ${Do}
        StrCpy $6 $5 1 -1
        ${If} $6 != "\"
            ${ExitDo}
        ${EndIf}
        StrCpy $5 $5 -1
    ${Loop}
    StrCpy $0 $5
    ClearErrors
    Pop $6
    Pop $5
    Pop $4
    Pop $3
    Pop $2
    Pop $1
    Exch $0
FunctionEnd

; Sets $FoundFolder and $FoundNote.
Function findPluginFolder
    Push $0
    StrCpy $FoundNote "A host has recorded its plug-in folder; taking that."
    Push "SOFTWARE\Adobe\Premiere Pro"
    Call newestPluginFolder
    Pop $0
    ${If} $0 == ""
        Push "SOFTWARE\Adobe\After Effects"
        Call newestPluginFolder
        Pop $0
    ${EndIf}
    ${If} $0 == ""
        ; No host has recorded a folder. Both spellings are in use; take the one that is there.
        ${If} ${FileExists} "$PROGRAMFILES64\Adobe\Common\Plugins\7.0\MediaCore\*.*"
            StrCpy $0 "$PROGRAMFILES64\Adobe\Common\Plugins\7.0\MediaCore"
        ${Else}
            StrCpy $0 "$PROGRAMFILES64\Adobe\Common\Plug-ins\7.0\MediaCore"
        ${EndIf}
        StrCpy $FoundNote "No host has recorded its plug-in folder; taking the usual one."
    ${EndIf}
    StrCpy $FoundFolder "$0\Orvantis"
    Pop $0
FunctionEnd

; ---------------------------------------------------------------------------------------------------------------------
; The codec library

; Takes a path, gives back "1" when the file is a library for 64-bit x86, else "0".
Function isAmd64Library
    Exch $0
    Push $1
    Push $2
    Push $3
    StrCpy $3 "0"
    ClearErrors
    FileOpen $1 "$0" r
    ${IfNot} ${Errors}
        FileReadWord $1 $2
        ${If} $2 == 23117               ; "MZ"
            FileSeek $1 60
            FileReadWord $1 $2          ; where the PE header is: below 64 KB in every library
            IntOp $2 $2 + 4
            FileSeek $1 $2
            FileReadWord $1 $2
            ${IfNot} ${Errors}
            ${AndIf} $2 == 34404        ; 0x8664
                StrCpy $3 "1"
            ${EndIf}
        ${EndIf}
        FileClose $1
    ${EndIf}
    ClearErrors
    StrCpy $0 $3
    Pop $3
    Pop $2
    Pop $1
    Exch $0
FunctionEnd

; Looks for the codec library where the loader of a host process looks: system folder, Windows folder, PATH. Not beside
; the plug-in and not beside setup, where a host would not find it. Sets $CodecPath and $CodecText.
Function findCodec
    Push $0
    Push $1
    Push $2
    Push $3
    StrCpy $CodecPath ""
    ${If} ${FileExists} "$SYSDIR\${CODEC}"
        StrCpy $CodecPath "$SYSDIR\${CODEC}"
    ${ElseIf} ${FileExists} "$WINDIR\${CODEC}"
        StrCpy $CodecPath "$WINDIR\${CODEC}"
    ${Else}
        ; PATH can be longer than a string of this script, so it stays in memory of its own.
        System::Call 'kernel32::GetEnvironmentVariableW(w "PATH", p 0, i 0) i.r1'
        ${If} $1 > 0
            IntOp $2 $1 * 2
            System::Alloc $2
            Pop $3
            System::Call 'kernel32::GetEnvironmentVariableW(w "PATH", p r3, i r1)'
            System::Call 'kernel32::SearchPathW(p r3, w "${CODEC}", p 0, i ${NSIS_MAX_STRLEN}, w .r0, p 0) i.r2'
            System::Free $3
            ${If} $2 > 0
            ${AndIf} $2 < ${NSIS_MAX_STRLEN}
                StrCpy $CodecPath $0
            ${EndIf}
        ${EndIf}
    ${EndIf}

    ${If} $CodecPath == ""
        StrCpy $CodecText "The codec library ${CODEC} was not found in the Windows system folder or on the PATH. The host looks there and in its own program folder, not beside the plug-in, and ignores the importer without it.$\r$\nInstall the 64-bit Orvantis codec, then start the host with the Shift key held down, so that it tries the plug-in again."
    ${Else}
        Push $CodecPath
        Call isAmd64Library
        Pop $0
        ${If} $0 == "1"
            StrCpy $CodecText "The codec library was found: $CodecPath"
        ${Else}
            StrCpy $CodecText "The codec library that Windows finds first, $CodecPath, is not a 64-bit library, and the host cannot load it.$\r$\nInstall the 64-bit Orvantis codec, then start the host with the Shift key held down, so that it tries the plug-in again."
            StrCpy $CodecPath ""
        ${EndIf}
    ${EndIf}
    Pop $3
    Pop $2
    Pop $1
    Pop $0
FunctionEnd

; ---------------------------------------------------------------------------------------------------------------------
; What is installed

!ifdef HAVE_TOOL
    InstType "Plug-in and diagnostic tool"
!endif
InstType "Plug-in only"

Section "Importer plug-in" sectionPlugin
    SectionIn RO
    Push $0
    Push $1

    Push $2
    Push $3
    Push $4
    Push $5
    Push $6

    Push $INSTDIR
    Call waitForHost

    ; A host that finds two copies of one importer loads either. An older one in another folder goes away first.
    ReadRegStr $0 HKLM "${UNINSTALL_KEY}" "InstallLocation"
    ReadRegStr $1 HKLM "${UNINSTALL_KEY}" "DisplayVersion"
    ClearErrors
    ${If} $0 != ""
    ${AndIf} $0 != $INSTDIR
    ${AndIf} ${FileExists} "$0\uninstall.exe"
        Push $0
        Call waitForHost
        ${Log} "Removing version $1 from $0"
        InitPluginsDir
        CopyFiles /SILENT "$0\uninstall.exe" "$PLUGINSDIR\uninstall-old.exe"
        ExecWait '"$PLUGINSDIR\uninstall-old.exe" /S /UPGRADE /SETUPLOG="$PLUGINSDIR\uninstall-old.log" _?=$0' $1
        ${If} $1 != 0
            ${Log} "The older version could not be removed (code $1)."
            SetErrorLevel ${EXIT_FAILED}
            Abort "The older version in $0 could not be removed."
        ${EndIf}
    ${ElseIf} $1 != ""
        ${Log} "Replacing version $1"
    ${EndIf}

    ; Neither does Windows Installer's.
    ReadRegStr $0 HKLM "${MSI_KEY}" "ProductCode"
    ClearErrors
    ${If} $0 != ""
        ReadRegStr $2 HKLM "${MSI_KEY}" "InstallLocation"
        Push $2
        Call waitForHost
        ${Log} "Removing what the MSI package has installed in $2"
        ExecWait '"$SYSDIR\msiexec.exe" /x $0 /qn KEEPLOG=1' $1
        ${If} $1 != 0
            ${Log} "It could not be removed (code $1)."
            SetErrorLevel ${EXIT_FAILED}
            Abort "What the MSI package has installed in $2 could not be removed."
        ${EndIf}
    ${EndIf}

    ; The new file is complete before the old one goes, so that a full disk leaves a working plug-in.
    ClearErrors
    SetOutPath "$INSTDIR"
    ${If} ${Errors}
        ${Log} "Cannot create $INSTDIR"
        SetErrorLevel ${EXIT_FAILED}
        Abort "Cannot create $INSTDIR"
    ${EndIf}
    File "/oname=${PLUGIN}.new" "${STAGE}/${PLUGIN}"
    Delete "$INSTDIR\${PLUGIN}"
    Rename "$INSTDIR\${PLUGIN}.new" "$INSTDIR\${PLUGIN}"
    ${If} ${Errors}
        Delete "$INSTDIR\${PLUGIN}.new"
        ${Log} "Cannot write $INSTDIR\${PLUGIN}"
        SetErrorLevel ${EXIT_FAILED}
        Abort "Cannot write $INSTDIR\${PLUGIN}"
    ${EndIf}
    File "${STAGE}/README.txt"
    File "${STAGE}/CHANGELOG.txt"
    File "${STAGE}/LICENSE.txt"
    File "${STAGE}/THIRD_PARTY_NOTICES.txt"
    WriteUninstaller "$INSTDIR\uninstall.exe"

    ClearErrors
    WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "${PRODUCT}"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "Publisher" "Orvantis Importer Developers"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\uninstall.exe"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "Readme" "$INSTDIR\README.txt"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "HelpLink" "file:///$INSTDIR\README.txt"
    !ifdef HOME_URL
        WriteRegStr HKLM "${UNINSTALL_KEY}" "URLInfoAbout" "${HOME_URL}"
        WriteRegStr HKLM "${UNINSTALL_KEY}" "URLUpdateInfo" "${HOME_URL}/releases"
    !else
        WriteRegStr HKLM "${UNINSTALL_KEY}" "URLUpdateInfo" "file:///$INSTDIR\CHANGELOG.txt"
    !endif
    ${GetTime} "" "L" $0 $1 $2 $3 $4 $5 $6      ; day, month, year
    WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallDate" "$2$1$0"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
    ; A folder that somebody chose stays when a newer version is installed without a choice.
    ${If} $INSTDIR == $FoundFolder
        WriteRegDWORD HKLM "${UNINSTALL_KEY}" "FolderWasChosen" 0
    ${Else}
        WriteRegDWORD HKLM "${UNINSTALL_KEY}" "FolderWasChosen" 1
    ${EndIf}
    ${If} ${Errors}
        ${Log} "Cannot write the uninstall information"
        SetErrorLevel ${EXIT_FAILED}
        Abort "Cannot write the uninstall information"
    ${EndIf}
    SetShellVarContext all
    CreateDirectory "${MENU}"
    CreateShortcut "${MENU}\Read me.lnk" "$INSTDIR\README.txt"
    ${Log} "Installed version ${VERSION} in $INSTDIR"
    Pop $6
    Pop $5
    Pop $4
    Pop $3
    Pop $2
    Pop $1
    Pop $0
SectionEnd

!ifdef HAVE_TOOL
Section "Diagnostic tool" sectionTool
    SectionIn 1
    SetOutPath "$INSTDIR"
    File "${STAGE}/${TOOL}"
    ; Through the command interpreter, whose window stays open when the tool has answered.
    SetShellVarContext all
    CreateShortcut "${MENU}\Check this computer.lnk" "$SYSDIR\cmd.exe" '/k ""$INSTDIR\${TOOL}" doctor"' \
        "$INSTDIR\uninstall.exe" 0 SW_SHOWNORMAL "" "Will the host find the importer and its codec?"
    ${Log} "Installed ${TOOL}"
SectionEnd
!endif

Section "-finish"
    Push $0
    Push $1
    Push $2
    !ifdef HAVE_TOOL
        ${IfNot} ${SectionIsSelected} ${sectionTool}
        ${AndIf} ${FileExists} "$INSTDIR\${TOOL}"
            Delete "$INSTDIR\${TOOL}"
            SetShellVarContext all
            Delete "${MENU}\Check this computer.lnk"
            ${Log} "Removed ${TOOL}"
        ${EndIf}
    !endif
    ${If} $LogSwitch != ""
        ReadRegDWORD $0 HKCU "${SWITCH_KEY}" "${SWITCH_VALUE}"
        ClearErrors
        WriteRegDWORD HKCU "${SWITCH_KEY}" "${SWITCH_VALUE}" $LogSwitch
        ${If} $LogSwitch == 0
            DeleteRegValue HKCU "${SWITCH_KEY}" "${SWITCHED_BY_SETUP}"
        ${ElseIf} $0 = 0
            WriteRegDWORD HKCU "${SWITCH_KEY}" "${SWITCHED_BY_SETUP}" 1    ; what setup switched on, removal switches off
        ${EndIf}
        ${If} $LogSwitch == 1
            ${Log} "Diagnostic log: switched on for this account"
        ${Else}
            ${Log} "Diagnostic log: switched off for this account"
        ${EndIf}
    ${EndIf}
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "EstimatedSize" $0
    ${If} $CodecPath == ""
        ${Log} "Warning: $CodecText"
        MessageBox MB_OK|MB_ICONEXCLAMATION "$CodecText" /SD IDOK
    ${Else}
        ${Log} "$CodecText"
    ${EndIf}
    ; Codes of other programs that setup ran are not its own.
    SetErrorLevel 0
    Pop $2
    Pop $1
    Pop $0
SectionEnd

!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
    !insertmacro MUI_DESCRIPTION_TEXT ${sectionPlugin} "ImporterOrvantis.prm, which the host loads."
    !ifdef HAVE_TOOL
        !insertmacro MUI_DESCRIPTION_TEXT ${sectionTool} "importer_host.exe, a command-line program that opens a clip through the plug-in and reports what the host would see."
    !endif
!insertmacro MUI_FUNCTION_DESCRIPTION_END

; ---------------------------------------------------------------------------------------------------------------------
; Start of the installer

; Ends setup because of its arguments: takes the text from the stack.
Function refuseArguments
    Exch $0
    ${Log} "$0"
    MessageBox MB_OK|MB_ICONSTOP "$0" /SD IDOK
    SetErrorLevel ${EXIT_USAGE}
    Quit
FunctionEnd

!macro OptionsFunction un text
; Answers /? on the command line with the list of options, and ends setup.
Function ${un}answerHelp
    Push $0
    ClearErrors
    ${GetOptions} $Arguments "/?" $0
    ${IfNot} ${Errors}
        ${Log} "${text}"
        MessageBox MB_OK|MB_ICONINFORMATION "${text}" /SD IDOK
        SetErrorLevel 0
        Quit
    ${EndIf}
    ClearErrors
    Pop $0
FunctionEnd
!macroend
!insertmacro OptionsFunction "" "Options of setup:$\r$\n/S   no windows, no questions$\r$\n/D=folder   the plug-in's own folder; last, without quotation marks$\r$\n/LOG=1, /LOG=0   diagnostic log on or off for this account$\r$\n/TOOL=1, /TOOL=0   with or without ${TOOL}$\r$\n/REQUIRECODEC   install only when the codec library is found$\r$\n/SETUPLOG=file   where setup writes what it did$\r$\n/?   this list; nothing is installed"

!ifdef HAVE_TOOL
; The check is offered only to those who installed the tool for it.
Function showFinish
    ${IfNot} ${SectionIsSelected} ${sectionTool}
        SendMessage $mui.FinishPage.Run ${BM_SETCHECK} ${BST_UNCHECKED} 0
        ShowWindow $mui.FinishPage.Run ${SW_HIDE}
    ${EndIf}
FunctionEnd

Function checkComputer
    Exec '"$SYSDIR\cmd.exe" /k ""$INSTDIR\${TOOL}" doctor"'
FunctionEnd
!endif

Function .onInit
    SetRegView 64
    Push $0
    Push $1
    ${GetParameters} $Arguments

    ClearErrors
    ${GetOptions} $Arguments "/SETUPLOG=" $SetupLog
    ${If} ${Errors}
    ${OrIf} $SetupLog == ""
        StrCpy $SetupLog "$TEMP\ImporterOrvantis-setup.log"
    ${EndIf}
    Call startSetupLog
    Call answerHelp

    StrCpy $LogSwitch ""
    ClearErrors
    ${GetOptions} $Arguments "/LOG=" $0
    ${IfNot} ${Errors}
        ${If} $0 S!= "0"
        ${AndIf} $0 S!= "1"
            Push "/LOG=$0: the value must be 1 (on) or 0 (off)."
            Call refuseArguments
        ${EndIf}
        StrCpy $LogSwitch $0
    ${EndIf}

    Call findPluginFolder
    ${If} $INSTDIR == ""
        ; An unusable /D= looks like none at all here. Whoever gave one must not get another folder.
        System::Call 'kernel32::GetCommandLineW() w .r0'
        ClearErrors
        ${GetOptions} $0 "/D=" $1
        ${IfNot} ${Errors}
            Push "/D=$1: this folder cannot be used."
            Call refuseArguments
        ${EndIf}
        StrCpy $INSTDIR $FoundFolder
        ReadRegDWORD $0 HKLM "${UNINSTALL_KEY}" "FolderWasChosen"
        ReadRegStr $1 HKLM "${UNINSTALL_KEY}" "InstallLocation"
        ${If} $0 == 1
        ${AndIf} ${FileExists} "$1\${PLUGIN}"
            StrCpy $INSTDIR $1
            StrCpy $FoundNote "Taking the folder that was chosen for the installed version."
        ${EndIf}
        ${Log} "$FoundNote"
    ${EndIf}

    ClearErrors
    ${GetOptions} $Arguments "/TOOL=" $0
    ${If} ${Errors}
        StrCpy $0 "1"
        ${If} ${FileExists} "$INSTDIR\${PLUGIN}"
        ${AndIfNot} ${FileExists} "$INSTDIR\${TOOL}"
            StrCpy $0 "0"
        ${EndIf}
    ${ElseIf} $0 S!= "0"
    ${AndIf} $0 S!= "1"
        Push "/TOOL=$0: the value must be 1 (with it) or 0 (without it)."
        Call refuseArguments
    ${EndIf}
    !ifdef HAVE_TOOL
        ${If} $0 == "0"
            SetCurInstType 1
            !insertmacro UnselectSection ${sectionTool}
        ${EndIf}
    !endif

    Call findCodec
    ClearErrors
    ${GetOptions} $Arguments "/REQUIRECODEC" $0
    ${IfNot} ${Errors}
    ${AndIf} $CodecPath == ""
        ${Log} "$CodecText"
        ${Log} "Nothing was changed."
        MessageBox MB_OK|MB_ICONSTOP "$CodecText" /SD IDOK
        SetErrorLevel ${EXIT_NO_CODEC}
        Quit
    ${EndIf}
    ClearErrors
    Pop $1
    Pop $0
FunctionEnd

; The page after the folder's. The plug-in always gets a folder of its own; the folder's page itself cannot see to it,
; because it takes the text of its field once more after its own callback.
Function showOptions
    Push $0
    Push $1
    ${GetFileName} "$INSTDIR" $0
    ${If} $0 != "Orvantis"
        StrCpy $INSTDIR "$INSTDIR\Orvantis"
    ${EndIf}
    !insertmacro MUI_HEADER_TEXT "Options" "Codec library and diagnostic log"
    nsDialogs::Create 1018
    Pop $0
    ${NSD_CreateLabel} 0 0 100% 18u "The plug-in will be installed in $INSTDIR"
    Pop $0
    ${NSD_CreateLabel} 0 22u 100% 44u "$CodecText"
    Pop $0
    ${NSD_CreateCheckBox} 0 74u 100% 12u "&Write a diagnostic log"
    Pop $LogCheckbox
    ${NSD_CreateLabel} 12u 88u 95% 40u "For the account that runs setup. The log tells what the host asks of the plug-in and what it answers. It is written to the folder orvantis\adobe in the user profile, one file for each start of the host. Leave it off unless you look for a fault."
    Pop $0
    ReadRegDWORD $1 HKCU "${SWITCH_KEY}" "${SWITCH_VALUE}"
    ${If} $LogSwitch == 1
        ${NSD_Check} $LogCheckbox
    ${ElseIf} $LogSwitch == ""
    ${AndIf} $1 <> 0
        ${NSD_Check} $LogCheckbox
    ${EndIf}
    nsDialogs::Show
    Pop $1
    Pop $0
FunctionEnd

Function leaveOptions
    Push $0
    Push $1
    ${NSD_GetState} $LogCheckbox $0
    ReadRegDWORD $1 HKCU "${SWITCH_KEY}" "${SWITCH_VALUE}"
    ; Written only when it changes something: no key appears for a user who never touched the box.
    ${If} $0 == ${BST_CHECKED}
        StrCpy $LogSwitch 1
    ${ElseIf} $1 <> 0
        StrCpy $LogSwitch 0
    ${Else}
        StrCpy $LogSwitch ""
    ${EndIf}
    ClearErrors
    Pop $1
    Pop $0
FunctionEnd

; ---------------------------------------------------------------------------------------------------------------------
; Removal: exactly what was installed. The user's log switch and logs stay unless asked for.

; The log that setup has switched on for this account goes off with the plug-in. Not when a newer version takes over.
Function un.switchLogOff
    Push $0
    ClearErrors
    ${GetOptions} $Arguments "/UPGRADE" $0
    ${If} ${Errors}
        ReadRegDWORD $0 HKCU "${SWITCH_KEY}" "${SWITCHED_BY_SETUP}"
        ${If} $0 = 1
            DeleteRegValue HKCU "${SWITCH_KEY}" "${SWITCH_VALUE}"
            DeleteRegValue HKCU "${SWITCH_KEY}" "${SWITCHED_BY_SETUP}"
            DeleteRegKey /ifempty HKCU "${SWITCH_KEY}"
            ${Log} "Diagnostic log: switched off for this account, as setup had switched it on"
        ${EndIf}
    ${EndIf}
    ClearErrors
    Pop $0
FunctionEnd

Section "un.Importer plug-in" unsectionPlugin
    SectionIn RO
    Push $INSTDIR
    Call un.waitForHost

    ClearErrors
    Delete "$INSTDIR\${PLUGIN}"
    ${If} ${Errors}
        ${Log} "Cannot remove $INSTDIR\${PLUGIN}"
        SetErrorLevel ${EXIT_FAILED}
        Abort "Cannot remove $INSTDIR\${PLUGIN}"
    ${EndIf}
    Delete "$INSTDIR\${TOOL}"
    Delete "$INSTDIR\README.txt"
    Delete "$INSTDIR\CHANGELOG.txt"
    Delete "$INSTDIR\LICENSE.txt"
    Delete "$INSTDIR\THIRD_PARTY_NOTICES.txt"
    Delete "$INSTDIR\uninstall.exe"
    SetShellVarContext all
    Delete "${MENU}\Read me.lnk"
    Delete "${MENU}\Check this computer.lnk"
    RMDir "${MENU}"
    SetShellVarContext current
    RMDir "$INSTDIR"        ; stays when somebody else's file is in it
    DeleteRegKey HKLM "${UNINSTALL_KEY}"
    Call un.switchLogOff
    ${Log} "Removed from $INSTDIR"
SectionEnd

Section /o "un.Log switch and logs" unsectionPurge
    DeleteRegValue HKCU "${SWITCH_KEY}" "${SWITCH_VALUE}"
    DeleteRegValue HKCU "${SWITCH_KEY}" "${SWITCHED_BY_SETUP}"
    DeleteRegKey /ifempty HKCU "${SWITCH_KEY}"
    Delete "$PROFILE\orvantis\adobe\orvantis_pr_importer_*.log"
    RMDir "$PROFILE\orvantis\adobe"
    RMDir "$PROFILE\orvantis"
    ${Log} "Removed the log switch and the log files of this account"
SectionEnd

!insertmacro MUI_UNFUNCTION_DESCRIPTION_BEGIN
    !insertmacro MUI_DESCRIPTION_TEXT ${unsectionPlugin} "The plug-in, its tool and its texts."
    !insertmacro MUI_DESCRIPTION_TEXT ${unsectionPurge} "HKEY_CURRENT_USER\${SWITCH_KEY}, value ${SWITCH_VALUE}, and the logs in the folder orvantis\adobe of the user profile."
!insertmacro MUI_UNFUNCTION_DESCRIPTION_END

!insertmacro OptionsFunction "un." "Options of removal:$\r$\n/S   no windows, no questions$\r$\n/PURGE   also remove the log switch and the log files of this account$\r$\n/SETUPLOG=file   where it writes what it did$\r$\n/?   this list; nothing is removed"

Function un.onInit
    SetRegView 64
    Push $0
    ${GetParameters} $Arguments
    ClearErrors
    ${GetOptions} $Arguments "/SETUPLOG=" $SetupLog
    ${If} ${Errors}
    ${OrIf} $SetupLog == ""
        StrCpy $SetupLog "$TEMP\ImporterOrvantis-uninstall.log"
    ${EndIf}
    Call un.startSetupLog
    Call un.answerHelp
    ClearErrors
    ${GetOptions} $Arguments "/PURGE" $0
    ${IfNot} ${Errors}
        !insertmacro SelectSection ${unsectionPurge}
    ${EndIf}
    ClearErrors
    Pop $0
FunctionEnd
