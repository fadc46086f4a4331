// QorControl.h in C#: copy this file into your program, which must be one of 32 bits, like the
// library (/platform:x86). The header says what each function does; names and numbers are those of
// the header. C# 5; .NET Framework 4.7 or later, or .NET.
using System;
using System.Runtime.InteropServices;
using System.Text;

static class Qor
{
    // Causes
    public const int QOR_OK = 0;
    public const int QOR_AGENT_ENDED = 1;
    public const int QOR_AGENT_BUSY = 2;
    public const int QOR_PUSHED_OUT = 3;
    public const int QOR_NO_CONNECTION = 4;
    public const int QOR_SILENT = 5;
    public const int QOR_NO_DATA = 6;
    public const int QOR_REFUSED = 7;
    public const int QOR_UNKNOWN_NAME = 8;
    public const int QOR_KWP_BEFORE_CONNECT = 9;
    public const int QOR_CANCELLED = 10;
    public const int QOR_CONNECT_REPORTED = 11;
    public const int QOR_ECU_OFFLINE = 12;
    public const int QOR_RESULT_TOO_LARGE = 13;
    public const int QOR_BAD_ARGUMENT = 14;
    public const int QOR_OUT_OF_MEMORY = 15;
    public const int QOR_REQUEST_TOO_LARGE = 16;
    public const int QOR_CHANGED = 17;
    public const int QOR_BAD_ANSWER = 18;
    public const int QOR_SYSTEM_FAILURE = 19;
    public const int QOR_BAD_HANDLE = 20;
    public const int QOR_NOT_READY = 21;
    public const int QOR_WRONG_ORDER = 22;

    // Special time-outs
    public const uint QOR_DO_NOT_WAIT = 0;
    public const uint QOR_TRANSPORT_DEFAULT = 0xFFFFFFFE;
    public const uint QOR_NO_LIMIT = 0xFFFFFFFF;

    // What to connect through
    public const int QOR_CONNECT_DEFAULT = 1;
    public const int QOR_CONNECT_SECURITY_ACCESS = 2;
    public const int QOR_CONNECT_ALTERNATIVE = 3;

    // What becomes of message boxes, and the answers to them
    public const int QOR_BOX_SHOW = 0;
    public const int QOR_BOX_ANSWER = 1;
    public const int QOR_BOX_ASK = 2;
    public const uint QOR_CHOICE_OK = 1;
    public const uint QOR_CHOICE_CANCEL = 2;
    public const uint QOR_CHOICE_ABORT = 3;
    public const uint QOR_CHOICE_RETRY = 4;
    public const uint QOR_CHOICE_IGNORE = 5;
    public const uint QOR_CHOICE_YES = 6;
    public const uint QOR_CHOICE_NO = 7;

    // IntPtr stands for a handle, for a stream, for a text inside of a structure, and for the text
    // that a function returns (see TextOf).
    [StructLayout(LayoutKind.Sequential)]
    public struct QorEcuConnect
    {
        public uint size;
        public uint protocol;
        public uint protocolOption;
        public int optionFlag;
        public uint kLineBaudRate;
        public uint canBaudRate;
        public uint refreshPeriodMs;
        public uint canRequestId;
        public uint canResponseId;
        public uint addressByte1;
        public uint addressByte2;
        public uint addressWord;
        public int extraFlag;
        public int finalFlag;
        public IntPtr securityDll;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct QorConnectProgress
    {
        public uint size;
        public int running;
        public int cause;
        public int progress;
        public uint steps;
        public uint elapsedMs;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct QorModelDescription
    {
        public uint size;
        public uint modelType;
        public IntPtr model;
        public uint modelOption;
        public IntPtr hex;
        public uint hexOption;
        public IntPtr csv;
        public uint csvOption;
        public IntPtr extraKeys;
        public IntPtr extraValues;
        public uint extraCount;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct QorCanBusConnect
    {
        public uint size;
        public uint busParam;
        public int firstFlag;
        public int secondFlag;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct QorDtc
    {
        public uint code;
        public uint status;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct QorCanBusItem
    {
        public uint canId;
        public int value;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct QorSample
    {
        public uint name;
        public uint missed;
        public double value;
        public double timeMs;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct QorMessageBox
    {
        public uint size;
        public uint id;
        public uint type;
        public int waiting;
        public uint choice;
        public double timeMs;
    }

    // Keep an object of these for as long as the library may call it.
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    public delegate void QorLogFunction(IntPtr user, int isFailure, IntPtr line);
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    public delegate void QorProgressFunction(IntPtr user, int progress);

    const string Dll = "QorControlC.dll";
    const CallingConvention C = CallingConvention.Cdecl;
    const UnmanagedType Utf8 = UnmanagedType.LPUTF8Str;

    // The library and the calling thread's last call
    [DllImport(Dll, CallingConvention = C)]
    public static extern uint QorVersion();
    [DllImport(Dll, CallingConvention = C)]
    public static extern IntPtr QorVersionText();
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorLastCause();
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorLastSentence([Out] byte[] text, uint capacity, out uint needed);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorLastCheck([Out] byte[] text, uint capacity, out uint needed);
    [DllImport(Dll, CallingConvention = C)]
    public static extern uint QorLastElapsedMs();
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorLastMayBelongToEarlier();
    [DllImport(Dll, CallingConvention = C)]
    public static extern IntPtr QorCauseName(int cause);

    // Life and state
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorOpen([MarshalAs(Utf8)] string settingsPath, uint readPeriodMs,
        [MarshalAs(Utf8)] string hostPath, out IntPtr handle);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorClose(IntPtr handle);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorSetTcpNoDelay(IntPtr handle, int wanted);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorIsEcuOnline(IntPtr handle, out int online);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorIsConnecting(IntPtr handle, out int connecting);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorGetQorExecutablePath(IntPtr handle, [Out] byte[] path, uint capacity,
        out uint needed);
    [DllImport(Dll, CallingConvention = C)]
    public static extern IntPtr QorGetEdcRamSegmentName();
    [DllImport(Dll, CallingConvention = C)]
    public static extern IntPtr QorGetEdcRomSegmentName();

    // The connection; with IntPtr.Zero as settings: the defaults
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorEcuConnectDefaults(ref QorEcuConnect settings);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorConnect(IntPtr handle, IntPtr settings, int type, uint timeoutMs);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorConnect(IntPtr handle, ref QorEcuConnect settings, int type,
        uint timeoutMs);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorConnectStart(IntPtr handle, IntPtr settings, int type);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorConnectStart(IntPtr handle, ref QorEcuConnect settings, int type);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorConnectPoll(IntPtr handle, ref QorConnectProgress progress);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorConnectWait(IntPtr handle, uint timeoutMs);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorConnectCancel(IntPtr handle);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorConnectReason(IntPtr handle, [Out] byte[] text, uint capacity,
        out uint needed);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorPingQor(IntPtr handle, uint timeoutMs);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorSetEcuSegment(IntPtr handle, [MarshalAs(Utf8)] string segment,
        int flag);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorOpenModel(IntPtr handle, ref QorModelDescription model);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorConnectCanBus(IntPtr handle, ref QorCanBusConnect settings, int type);

    // Parameters
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorGetParamDescription(IntPtr handle, [MarshalAs(Utf8)] string name,
        out int threeArrays);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorGetParamData(IntPtr handle, [MarshalAs(Utf8)] string name,
        uint timeoutMs, [Out] double[] values, uint capacity, out uint needed);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorGetParamDataAsString(IntPtr handle, [MarshalAs(Utf8)] string name,
        uint timeoutMs, [Out] byte[] bytes, uint capacity, out uint needed);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorSetParamData(IntPtr handle, [MarshalAs(Utf8)] string name,
        double[] values, uint count, double[] second, uint secondCount, double[] third,
        uint thirdCount, uint timeoutMs);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorSetDynamicData(IntPtr handle, [MarshalAs(Utf8)] string name,
        [MarshalAs(Utf8)] string value, uint timeoutMs);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorStartDirectCtrl(IntPtr handle, [MarshalAs(Utf8)] string name,
        uint timeoutMs);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorStopDirectCtrl(IntPtr handle, [MarshalAs(Utf8)] string name,
        uint timeoutMs);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorGetParamDataAtOnce(IntPtr handle, IntPtr[] names, uint nameCount,
        uint timeoutMs, [Out] double[] values, uint capacity, out uint needed, [Out] uint[] counts);

    // Diagnostics
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorClearDtc(IntPtr handle, uint timeoutMs);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorGetDtcByStatus(IntPtr handle, uint timeoutMs, [Out] QorDtc[] dtcs,
        uint capacity, out uint needed);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorSendKwpCommand(IntPtr handle, uint service, byte[] data,
        uint dataBytes, uint timeoutMs, [Out] byte[] answer, uint capacity, out uint needed,
        out int failed);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorGetCanBusData(IntPtr handle, QorCanBusItem[] wanted, uint wantedCount,
        uint timeoutMs, [Out] QorCanBusItem[] items, uint capacity, out uint needed);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorSendCanBusMsg(IntPtr handle, uint first, uint second, byte[] message,
        uint messageBytes, uint timeoutMs);

    // The calling thread's last result
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorResultValues(IntPtr handle, uint index, [Out] double[] values,
        uint capacity, out uint needed);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorResultBytes(IntPtr handle, [Out] byte[] bytes, uint capacity,
        out uint needed);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorResultText(IntPtr handle, uint row, uint column, [Out] byte[] text,
        uint capacity, out uint needed);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorResultDtcs(IntPtr handle, [Out] QorDtc[] dtcs, uint capacity,
        out uint needed);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorResultCanBusItems(IntPtr handle, [Out] QorCanBusItem[] items,
        uint capacity, out uint needed);

    // Streams
    [DllImport(Dll, CallingConvention = C)]
    public static extern double QorNowMs();
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorStartParamRead(IntPtr handle, IntPtr[] names, uint nameCount,
        uint slots, out IntPtr stream);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorReadParamStream(IntPtr stream, [Out] QorSample[] samples,
        uint capacity, out uint count, uint timeoutMs);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorStopParamRead(IntPtr stream);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorStartDtcRead(IntPtr handle, uint timeoutMs, uint periodMs);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorReadDtcStream(IntPtr handle, uint timeoutMs, [Out] QorDtc[] dtcs,
        uint capacity, out uint needed, out double timeMs, out uint missed);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorStopDtcRead(IntPtr handle);

    // Message boxes
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorSetMessageBoxPolicy(IntPtr handle, int policy, uint choice,
        uint askMs);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorNextMessageBox(IntPtr handle, ref QorMessageBox box, [Out] byte[] text,
        uint textCapacity, out uint textNeeded, [Out] byte[] caption, uint captionCapacity,
        out uint captionNeeded);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorAnswerMessageBox(IntPtr handle, uint id, uint choice);

    // Callbacks
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorSetLog(IntPtr handle, QorLogFunction function, IntPtr user);
    [DllImport(Dll, CallingConvention = C)]
    public static extern int QorSetProgress(IntPtr handle, QorProgressFunction function, IntPtr user);

    // Structures begin with this.
    public static uint SizeOf<T>()
    {
        return (uint)Marshal.SizeOf(typeof(T));
    }

    // A text that the library owns.
    public static string TextOf(IntPtr text)
    {
        return Marshal.PtrToStringAnsi(text);
    }

    public delegate int TextFunction(byte[] text, uint capacity, out uint needed);

    // A text that a function copies into a buffer, or an empty one.
    public static string TextOf(TextFunction function)
    {
        uint needed;
        var text = new byte[1000];
        int cause = function(text, (uint)text.Length, out needed);
        if (cause == QOR_RESULT_TOO_LARGE)
        {
            text = new byte[needed];
            cause = function(text, needed, out needed);
        }
        return cause == QOR_OK ? Encoding.UTF8.GetString(text, 0, (int)needed - 1) : "";
    }

    // Several texts for the length of a call.
    public sealed class Texts : IDisposable
    {
        public readonly IntPtr[] Pointers;

        public Texts(params string[] texts)
        {
            Pointers = new IntPtr[texts.Length];
            for (int i = 0; i < texts.Length; ++i)
            {
                byte[] bytes = Encoding.UTF8.GetBytes(texts[i] + "\0");
                Pointers[i] = Marshal.AllocHGlobal(bytes.Length);
                Marshal.Copy(bytes, 0, Pointers[i], bytes.Length);
            }
        }

        public void Dispose()
        {
            foreach (IntPtr text in Pointers) Marshal.FreeHGlobal(text);
        }
    }
}
