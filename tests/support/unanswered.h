#pragma once

// Bases for hosts of which a test makes only a part real: whatever isn't overridden fails with E_NOTIMPL.

#include "host/host_interfaces.h"
#include "host/object_bases.h"

class UnansweredHost : public cCoClassUnknownT<KOV::IKOV_Inst> {
public:
    HRESULT GetExtension(LPCWSTR, IUnknown**) override { return E_NOTIMPL; }
    HRESULT LoadLocalizationStream(IStream*) override { return E_NOTIMPL; }
    HRESULT GetLocalStr(LPCWSTR, BSTR*) override { return E_NOTIMPL; }
    HRESULT Str2ID(LPCWSTR, VARIANT_BOOL, DWORD*) override { return E_NOTIMPL; }
    HRESULT RegisterInfoBar(LPCWSTR, LPCWSTR, LPCWSTR, LONG, DWORD, KOV::IKOV_MultiSizeImage*) override { return E_NOTIMPL; }
    HRESULT GetPluginSettings(KOV::IKOV_Plugin*, VARIANT_BOOL, KOV::IAUX_Cab**) override { return E_NOTIMPL; }
    HRESULT GetCryptKey(KOV::IKOV_Plugin*, VARIANT_BOOL, KOV::IKOV_CryptKey**) override { return E_NOTIMPL; }
    HRESULT CreateStdBindContext(KOV::IAFS_BindContext**) override { return E_NOTIMPL; }
    HRESULT GetDlgOwnerWnd(DWORD, HWND*) override { return E_NOTIMPL; }
    HRESULT ShowMsgBox(const KOV::MessageBoxParameters*, DWORD*, DWORD*, BSTR*, DWORD*) override { return E_NOTIMPL; }
    HRESULT ThreadSafeCall(KOV::IKOV_ThreadSafeCallback*, LONG) override { return E_NOTIMPL; }
    HRESULT FindDocumentOfFile(KOV::IAFS_File*, KOV::IKOV_Document**) override { return E_NOTIMPL; }
    HRESULT ReloadDocument(KOV::IKOV_Document*, IUnknown*, DWORD, IUnknown*) override { return E_NOTIMPL; }
    HRESULT get_EventServer(KOV::IKOV_EventServer**) override { return E_NOTIMPL; }
    HRESULT StartTimer(KOV::IKOV_TimerHandler*, DWORD, DWORD, DWORD*) override { return E_NOTIMPL; }
    HRESULT StopTimer(DWORD) override { return E_NOTIMPL; }
    HRESULT get_ProgressMon(KOV::IKOV_ProgressMon**) override { return E_NOTIMPL; }
    HRESULT get_DocsCount(ULONG*) override { return E_NOTIMPL; }
    HRESULT get_Doc(ULONG, KOV::IKOV_Document**) override { return E_NOTIMPL; }
    HRESULT GetDocViewFromUIObj(KOV::IUIX_Obj*, VARIANT_BOOL, KOV::IKOV_DocumentView**) override { return E_NOTIMPL; }
    HRESULT GetFileFilter(LPCWSTR, LONG, BSTR*) override { return E_NOTIMPL; }
    HRESULT FormatFileSize(ULONGLONG, LONG, BSTR*) override { return E_NOTIMPL; }
    HRESULT get_AppType(DWORD*) override { return E_NOTIMPL; }
};

class UnansweredDocument : public cCoClassDispatchT<KOV::IKOV_Document> {
public:
    HRESULT GetModifiedState(LONG*) override { return E_NOTIMPL; }
    HRESULT get_CoreDoc(KOV::IKOV_CoreDocument**) override { return E_NOTIMPL; }
    HRESULT get_InfoBar(KOV::IKOV_InfoBar**) override { return E_NOTIMPL; }
    HRESULT get_Modified(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT Save(IUnknown*, DWORD, KOV::IKOV_ProgressMon*, DWORD, DWORD, DWORD, DWORD, DWORD) override { return E_NOTIMPL; }
};

class UnansweredProgressMon : public cCoClassUnknownT<KOV::IKOV_ProgressMon> {
public:
    HRESULT put_Title(LPCWSTR) override { return E_NOTIMPL; }
    HRESULT put_Text(LPCWSTR) override { return E_NOTIMPL; }
    HRESULT put_Status(LPCWSTR) override { return E_NOTIMPL; }
    HRESULT SetStyle(DWORD) override { return E_NOTIMPL; }
    HRESULT put_Total(double) override { return E_NOTIMPL; }
    HRESULT put_Pos(double) override { return E_NOTIMPL; }
    HRESULT Start() override { return E_NOTIMPL; }
    HRESULT Stop() override { return E_NOTIMPL; }
    HRESULT get_Canceled(VARIANT_BOOL*) override { return E_NOTIMPL; }
};

template <class... Others>
class UnansweredUix : public cCoClassUnknownT<KOV::IUIX_Inst, Others...> {
public:
    HRESULT CreateMultiSizeImage(KOV::IKOV_MultiSizeImage**, const DWORD*, ULONG) override { return E_NOTIMPL; }
    HRESULT CreateImageFromStream(IStream*, KOV::IKOV_Picture**) override { return E_NOTIMPL; }
    HRESULT CreateObj(const KOV::CreateUiObjectParameters*, KOV::IUIX_Obj**) override { return E_NOTIMPL; }
    HRESULT get_CmdManager(KOV::IUIX_CmdManager**) override { return E_NOTIMPL; }
    HRESULT get_Theme(KOV::IUIX_Theme**) override { return E_NOTIMPL; }
    HRESULT GetIcon(LPCWSTR, KOV::IKOV_MultiSizeImage**) override { return E_NOTIMPL; }
    HRESULT CreateFileTypeIcon(LPWSTR, DWORD, KOV::IKOV_MultiSizeImage**) override { return E_NOTIMPL; }
    HRESULT CreateCmdBar(KOV::IUIX_Obj*, const RECT*, IUnknown*, IUnknown*, DWORD, KOV::IUIX_CmdBar**) override {
        return E_NOTIMPL;
    }
    HRESULT CreateCmdMenu(KOV::IUIX_CmdMenu**) override { return E_NOTIMPL; }
    HRESULT CreateCmdPanel(KOV::IUIX_CmdPanel**) override { return E_NOTIMPL; }
    HRESULT CreateNumberValue(KOV::IUIX_NumberValue**) override { return E_NOTIMPL; }
    HRESULT get_Metric(DWORD, LONG*) override { return E_NOTIMPL; }
};

class UnansweredFileSys : public cCoClassDispatchT<KOV::IAFS_FileSys> {
public:
    HRESULT get_Name(BSTR*) override { return E_NOTIMPL; }
    HRESULT get_Features(DWORD*) override { return E_NOTIMPL; }
    HRESULT get_UserString(BSTR*) override { return E_NOTIMPL; }
    HRESULT put_UserString(LPCWSTR) override { return E_NOTIMPL; }
    HRESULT get_Prop(KOV::IAFS_Name*, LPCWSTR, VARIANT*) override { return E_NOTIMPL; }
    HRESULT put_Prop(KOV::IAFS_Name*, LPCWSTR, const VARIANT*) override { return E_NOTIMPL; }
    HRESULT Exec(KOV::IAFS_Name*, LPCWSTR, const VARIANT*, VARIANT*, KOV::IString*, KOV::IKOV_Flag*) override {
        return E_NOTIMPL;
    }
    HRESULT BindToPath(LPCWSTR, KOV::IAFS_BindContext*, DWORD, KOV::IString*, KOV::IKOV_Flag*, KOV::IAFS_Name**) override {
        return E_NOTIMPL;
    }
    HRESULT BindToObject(IUnknown*, KOV::IAFS_BindContext*, DWORD, KOV::IString*, KOV::IKOV_Flag*, KOV::IAFS_Name**) override {
        return E_NOTIMPL;
    }
    HRESULT BindFlush(KOV::IAFS_Name*, DWORD, DWORD, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT BindClose(KOV::IAFS_Name*, DWORD, DWORD, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT EnumFolder(KOV::IAFS_Name*, KOV::IString*, KOV::IKOV_Flag*, KOV::IAFS_EnumFolder**) override { return E_NOTIMPL; }
    HRESULT StringToName(LPCWSTR, DWORD, KOV::IAFS_Name*, KOV::IAFS_Name**) override { return E_NOTIMPL; }
    HRESULT NameToString(KOV::IAFS_Name*, DWORD, KOV::IAFS_Name*, BSTR*) override { return E_NOTIMPL; }
    HRESULT NameGetParent(KOV::IAFS_Name*, KOV::IAFS_Name**) override { return E_NOTIMPL; }
    HRESULT NameIsChildOf(KOV::IAFS_Name*, KOV::IAFS_Name*, VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT NamesAreEqual(KOV::IAFS_Name*, KOV::IAFS_Name*, VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT OpenFile(KOV::IAFS_Name*, DWORD, KOV::IString*, KOV::IKOV_Flag*, KOV::IAFS_File**) override { return E_NOTIMPL; }
    HRESULT CreateFolder(KOV::IAFS_Name*, DWORD, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT Move(KOV::IAFS_Name*, KOV::IAFS_Name*, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT Copy(KOV::IAFS_Name*, KOV::IAFS_Name*, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT Rename(KOV::IAFS_Name*, KOV::IAFS_Name*, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT Delete(KOV::IAFS_Name*, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT GetFileInfo(KOV::IAFS_Name*, KOV::IString*, KOV::IKOV_Flag*, KOV::IAFS_FileInfo**) override { return E_NOTIMPL; }
    HRESULT GetVolumeSpace(KOV::IAFS_Name*, ULONGLONG*, ULONGLONG*, ULONGLONG*, KOV::IString*, KOV::IKOV_Flag*) override {
        return E_NOTIMPL;
    }
    HRESULT CreateDlgParams(DWORD, KOV::IAUX_Cab**) override { return E_NOTIMPL; }
    HRESULT ShowDlg(DWORD, KOV::IAFS_Name*, KOV::IAUX_Cab*, HWND, KOV::IAFS_NamesCollection**, DWORD*) override {
        return E_NOTIMPL;
    }
    HRESULT SetProgressMon(KOV::IKOV_ProgressMon*) override { return E_NOTIMPL; }
    HRESULT GetProgressMon(DWORD, KOV::IKOV_ProgressMon**) override { return E_NOTIMPL; }
    HRESULT CreateAccount(LPCWSTR, KOV::IAUX_Cab*, DWORD, DWORD, DWORD, KOV::IAFS_AccountData**) override { return E_NOTIMPL; }
    HRESULT get_DispName(BSTR*) override { return E_NOTIMPL; }
    HRESULT get_Icon(KOV::IKOV_MultiSizeImage**) override { return E_NOTIMPL; }
};
