// child_process_windows.cpp: child processes on Windows, and a user of their message boxes.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Windows has no fork, so the child is this program again. It runs only the current test, and of its statements only
// the one with the same number. A thread of the child waits for message boxes of its process. It writes what a user
// would see to a pipe of its own and presses a button. If no window can be shown, MessageBoxW returns at once, nothing
// is read, and the parent sees no box.

#include "child_process_windows.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <windows.h>

namespace nuv_tests {

namespace {

constexpr const char* StatementVariable = "NUV_CHILD_STATEMENT"; // which statement the child is to run
constexpr const char* PipeVariable = "NUV_CHILD_PIPE";           // where it tells of its message boxes
constexpr const char* AnswerVariable = "NUV_CHILD_ANSWER";       // the identifier of the button to press
constexpr const char* HoldVariable = "NUV_MESSAGE_BOX_HOLD";     // how many milliseconds a box stays, for a picture

// These separate the fields of a box, and the boxes. Neither character occurs in a text.
constexpr char FieldEnd = '\x1f';
constexpr char BoxEnd = '\x1e';

void Check(bool a_bSucceeded, const char* a_szCall)
{
    if (!a_bSucceeded)
    {
        throw std::runtime_error(std::string(a_szCall) + ": error " + std::to_string(GetLastError()));
    }
}

std::string Utf8(const std::wstring& a_szText)
{
    const int iLength = static_cast<int>(a_szText.size());
    std::string szUtf8(3 * a_szText.size(), '\0');
    szUtf8.resize(WideCharToMultiByte(CP_UTF8, 0, a_szText.data(), iLength, szUtf8.data(),
                                      static_cast<int>(szUtf8.size()), nullptr, nullptr));
    return szUtf8;
}

std::string WindowText(HWND a_Window)
{
    wchar_t szText[2048];
    const int iLength = GetWindowTextW(a_Window, szText, 2048);
    return Utf8(std::wstring(szText, iLength));
}

std::string ClassName(HWND a_Window)
{
    char szClass[64] = "";
    GetClassNameA(a_Window, szClass, sizeof szClass);
    return szClass;
}

// --- the child

// A visible dialog of this process, or null.
HWND FindDialog()
{
    HWND Found = nullptr;
    EnumWindows(
        [](HWND a_Window, LPARAM a_pFound) -> BOOL
        {
            DWORD iProcess = 0;
            GetWindowThreadProcessId(a_Window, &iProcess);
            if (iProcess != GetCurrentProcessId() || ClassName(a_Window) != "#32770" || !IsWindowVisible(a_Window))
            {
                return TRUE;
            }
            *reinterpret_cast<HWND*>(a_pFound) = a_Window;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&Found));
    return Found;
}

// What a child window of a dialog is: its class, or "Icon" for a picture.
std::string Kind(HWND a_Window)
{
    const std::string szClass = ClassName(a_Window);
    const bool bIcon = szClass == "Static" && SendMessageW(a_Window, STM_GETICON, 0, 0) != 0;
    return bIcon ? "Icon" : szClass;
}

// The fields: caption, owner, then each visible child window: its kind, identifier and text.
std::string Describe(HWND a_Dialog)
{
    std::string szFields =
        WindowText(a_Dialog) + FieldEnd + (GetWindow(a_Dialog, GW_OWNER) != nullptr ? "owner" : "") + FieldEnd;
    EnumChildWindows(
        a_Dialog,
        [](HWND a_Window, LPARAM a_pFields) -> BOOL
        {
            if (GetWindowLongW(a_Window, GWL_STYLE) & WS_VISIBLE)
            {
                *reinterpret_cast<std::string*>(a_pFields) += Kind(a_Window) + FieldEnd +
                                                              std::to_string(GetDlgCtrlID(a_Window)) + FieldEnd +
                                                              WindowText(a_Window) + FieldEnd;
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&szFields));
    return szFields + BoxEnd;
}

int Number(const char* a_szVariable)
{
    const char* const szValue = std::getenv(a_szVariable);
    return szValue != nullptr ? std::atoi(szValue) : 0;
}

// Runs for the rest of the process: reads every complete message box and presses the button.
void AnswerMessageBoxes()
{
    constexpr DWORD iPause = 20;
    const int iAnswer = Number(AnswerVariable);
    const HANDLE Pipe = reinterpret_cast<HANDLE>(static_cast<INT_PTR>(Number(PipeVariable)));
    for (;; Sleep(iPause))
    {
        const HWND Dialog = FindDialog();
        const HWND Button = Dialog != nullptr ? GetDlgItem(Dialog, iAnswer) : nullptr;
        if (Button == nullptr || !IsWindowVisible(Button))
        {
            continue;
        }
        Sleep(5 * iPause + Number(HoldVariable));
        const std::string szBox = Describe(Dialog);
        DWORD iWritten = 0;
        WriteFile(Pipe, szBox.data(), static_cast<DWORD>(szBox.size()), &iWritten, nullptr);
        PostMessageW(Dialog, WM_COMMAND, MAKEWPARAM(iAnswer, BN_CLICKED), reinterpret_cast<LPARAM>(Button));
        while (IsWindow(Dialog))
        {
            Sleep(iPause);
        }
    }
}

[[noreturn]] void RunAsChild(const std::function<void()>& a_Statement)
{
    std::thread(AnswerMessageBoxes).detach();
    a_Statement();
    TerminateProcess(GetCurrentProcess(), CameBack);
    std::abort();
}

// --- the parent

// A pipe whose end for writing a child inherits.
struct TPipe
{
    TPipe()
    {
        SECURITY_ATTRIBUTES Attributes = {sizeof Attributes, nullptr, TRUE};
        Check(CreatePipe(&Read, &Write, &Attributes, 1 << 16), "CreatePipe");
        SetHandleInformation(Read, HANDLE_FLAG_INHERIT, 0);
    }

    TPipe(const TPipe&) = delete;
    TPipe& operator=(const TPipe&) = delete;

    ~TPipe()
    {
        CloseWrite();
        CloseHandle(Read);
    }

    void CloseWrite()
    {
        if (Write != nullptr)
        {
            CloseHandle(Write);
            Write = nullptr;
        }
    }

    // Reads until the last process with the other end is gone.
    std::string ReadAll()
    {
        CloseWrite();
        std::string szText;
        char szBuffer[4096];
        DWORD iRead = 0;
        while (ReadFile(Read, szBuffer, sizeof szBuffer, &iRead, nullptr) && iRead > 0)
        {
            szText.append(szBuffer, iRead);
        }
        return szText;
    }

    HANDLE Read = nullptr;
    HANDLE Write = nullptr;
};

std::string CurrentTest()
{
    const ::testing::TestInfo* const pTest = ::testing::UnitTest::GetInstance()->current_test_info();
    return std::string(pTest->test_suite_name()) + "." + pTest->name();
}

// Counts the statements of each test from 1.
int NextStatement()
{
    static std::string s_szTest;
    static int s_iStatement;
    if (s_szTest != CurrentTest())
    {
        s_szTest = CurrentTest();
        s_iStatement = 0;
    }
    return ++s_iStatement;
}

// Under wine the first process that needs the desktop starts the desktop's own process, which keeps the error output of
// its starter open. If a child started it, ReadAll() would not see the end of the child's pipe.
void StartDesktop()
{
    GetDesktopWindow();
}

HANDLE StartChild(const TPipe& a_Error, const TPipe& a_Boxes, int a_iStatement, int a_iAnswer)
{
    StartDesktop();
    SetEnvironmentVariableA(StatementVariable, std::to_string(a_iStatement).c_str());
    SetEnvironmentVariableA(AnswerVariable, std::to_string(a_iAnswer).c_str());
    SetEnvironmentVariableA(PipeVariable, std::to_string(reinterpret_cast<INT_PTR>(a_Boxes.Write)).c_str());
    char szProgram[MAX_PATH];
    Check(GetModuleFileNameA(nullptr, szProgram, MAX_PATH) != 0, "GetModuleFileName");
    std::string szCommand = '"' + std::string(szProgram) + "\" --gtest_filter=" + CurrentTest();
    STARTUPINFOA Start = {};
    Start.cb = sizeof Start;
    Start.dwFlags = STARTF_USESTDHANDLES; // no standard input, no standard output
    Start.hStdError = a_Error.Write;
    PROCESS_INFORMATION Process;
    Check(CreateProcessA(nullptr, szCommand.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &Start, &Process),
          "CreateProcess");
    SetEnvironmentVariableA(StatementVariable, nullptr);
    CloseHandle(Process.hThread);
    return Process.hProcess;
}

// -1 if the child had to be ended.
int WaitForExit(HANDLE a_Child)
{
    constexpr DWORD iPatience = 60000;
    DWORD iCode = 0;
    if (WaitForSingleObject(a_Child, iPatience) != WAIT_OBJECT_0)
    {
        TerminateProcess(a_Child, 1);
        return -1;
    }
    Check(GetExitCodeProcess(a_Child, &iCode), "GetExitCodeProcess");
    CloseHandle(a_Child);
    return static_cast<int>(iCode);
}

std::vector<std::string> Split(const std::string& a_szText, char a_cEnd)
{
    std::vector<std::string> vszParts;
    std::size_t iStart = 0;
    for (std::size_t iEnd; (iEnd = a_szText.find(a_cEnd, iStart)) != std::string::npos; iStart = iEnd + 1)
    {
        vszParts.push_back(a_szText.substr(iStart, iEnd - iStart));
    }
    return vszParts;
}

TMessageBox ParseBox(const std::string& a_szBox)
{
    const std::vector<std::string> vszFields = Split(a_szBox, FieldEnd);
    TMessageBox Box;
    Box.szCaption = vszFields.at(0);
    Box.bHasOwner = !vszFields.at(1).empty();
    for (std::size_t i = 2; i + 2 < vszFields.size(); i += 3)
    {
        const std::string& szKind = vszFields[i];
        const std::string& szText = vszFields[i + 2];
        if (szKind == "Button")
        {
            Box.vszButtons.push_back(vszFields[i + 1] + " " + szText);
        }
        else
        {
            Box.bHasIcon = Box.bHasIcon || szKind == "Icon";
            Box.szText += szText;
        }
    }
    return Box;
}

} // namespace

TMessageBoxEnd RunAtMessageBox(const std::function<void()>& a_Statement, int a_iAnswer)
{
    const int iStatement = NextStatement();
    if (const int iWanted = Number(StatementVariable))
    {
        if (iWanted == iStatement)
        {
            RunAsChild(a_Statement);
        }
        return {};
    }
    TPipe Error;
    TPipe Boxes;
    const HANDLE Child = StartChild(Error, Boxes, iStatement, a_iAnswer);
    TMessageBoxEnd End;
    Boxes.CloseWrite();
    std::thread Reader([&] { End.Child.szText = Error.ReadAll(); });
    End.Child.iExitCode = WaitForExit(Child);
    Reader.join();
    for (const std::string& szBox : Split(Boxes.ReadAll(), BoxEnd))
    {
        End.Boxes.push_back(ParseBox(szBox));
    }
    return End;
}

TChildEnd RunInChild(const std::function<void()>& a_Statement)
{
    const TMessageBoxEnd End = RunAtMessageBox(a_Statement, IDRETRY);
    TChildEnd Child = End.Child;
    for (const TMessageBox& Box : End.Boxes)
    {
        Child.szText += Box.szText;
    }
    return Child;
}

} // namespace nuv_tests
