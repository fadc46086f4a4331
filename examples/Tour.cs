// A tour of QorControlC.dll in C#: connects an ECU, reads, writes, is refused, streams, reads and
// clears trouble codes. The argument is QOR's settings file. What each step saw goes to standard
// output; the exit code is 0 if all went as it should.
//
// C# 5, so that the compiler that lies on every Windows can build it; .NET Framework 4.7 or .NET.
// The library has 32 bits, so the program must: /platform:x86. The class Qor, below the tour, is
// QorControl.h in C#: copy it into your program.
using System;
using System.Globalization;
using System.Runtime.InteropServices;
using System.Text;

static class Tour
{
    // Why this thread's last call failed. Ask at once: the next call has a cause of its own.
    static void PrintCause()
    {
        int cause = Qor.QorLastCause();
        Console.WriteLine("  cause: {0} {1}", cause, Qor.TextOf(Qor.QorCauseName(cause)));
        Console.WriteLine("  sentence: " + Qor.TextOf(Qor.QorLastSentence));
        Console.WriteLine("  check: " + Qor.TextOf(Qor.QorLastCheck));
    }

    // What a step came to.
    static bool Worked(string step, int cause)
    {
        Console.WriteLine("{0}: {1}", step, cause == Qor.QOR_OK ? "ok" : "failed");
        if (cause != Qor.QOR_OK) PrintCause();
        return cause == Qor.QOR_OK;
    }

    // With a point, whatever the country.
    static string Fixed(double value, string format)
    {
        return value.ToString(format, CultureInfo.InvariantCulture);
    }

    // A connect may take a minute. It runs in the background, so that a window could go on drawing
    // and a button could call QorConnectCancel. QorConnect does all this in one call, without
    // figures.
    static bool ConnectEcu(IntPtr qor)
    {
        int cause = Qor.QorConnectStart(qor, IntPtr.Zero, Qor.QOR_CONNECT_DEFAULT);
        if (cause != Qor.QOR_OK) return Worked("connect", cause);
        var state = new Qor.QorConnectProgress { size = Qor.SizeOf<Qor.QorConnectProgress>() };
        int shown = -1;
        do
        {
            Qor.QorConnectWait(qor, 20);  // QOR_NOT_READY while it runs
            cause = Qor.QorConnectPoll(qor, ref state);
            if (cause != Qor.QOR_OK) return Worked("connect", cause);
            if (state.progress >= 0 && state.progress != shown)  // -1: none
                Console.WriteLine("progress: " + (shown = state.progress));
            if (state.elapsedMs > 60000) Qor.QorConnectCancel(qor);
        } while (state.running != 0);
        return Worked("connect", Qor.QorConnectWait(qor, 0));
    }

    static int Read(IntPtr qor, string name, double[] values)
    {
        uint count;
        return Qor.QorGetParamData(qor, name, 1000, values, (uint)values.Length, out count);
    }

    // Asks QOR itself; QorGetParamData may tell what was just written, from the cache.
    static int ReadPastTheCache(IntPtr qor, string name, double[] values)
    {
        uint count;
        using (var names = new Qor.Texts(name))
            return Qor.QorGetParamDataAtOnce(qor, names.Pointers, 1, 1000, values, (uint)values.Length,
                                             out count, null);
    }

    static int Write(IntPtr qor, string name, double value)
    {
        return Qor.QorSetParamData(qor, name, new[] { value }, 1, null, 0, null, 0, 1000);
    }

    static bool ReadAndWrite(IntPtr qor)
    {
        const string target = "IdleSpeedTarget";
        var value = new double[1];
        int cause = Read(qor, "EngineSpeed", value);
        if (cause != Qor.QOR_OK) return Worked("read", cause);
        Console.WriteLine("read: EngineSpeed = " + Fixed(value[0], "F2"));
        if (!Worked("write", Write(qor, target, 900))) return false;
        cause = ReadPastTheCache(qor, target, value);
        if (cause != Qor.QOR_OK) return Worked("read back", cause);
        Console.WriteLine("read back: {0} = {1}", target, Fixed(value[0], "F2"));
        return value[0] == 900;
    }

    // What must not work, and what the library says about it.
    static bool BeRefused(IntPtr qor)
    {
        Console.WriteLine("refused: IdleSpeedTarget = 99999");
        bool good = Write(qor, "IdleSpeedTarget", 99999) == Qor.QOR_REFUSED;
        PrintCause();
        Console.WriteLine("refused: NoSuchName");
        good &= Read(qor, "NoSuchName", new double[1]) == Qor.QOR_UNKNOWN_NAME;
        PrintCause();
        return good;
    }

    // Values as they come, for a second. The library collects them, this thread fetches them.
    static bool StreamValues(IntPtr qor)
    {
        string[] names = { "EngineSpeed", "OilPressure" };
        double start = Qor.QorNowMs();
        IntPtr stream;
        int cause;
        using (var texts = new Qor.Texts(names))
            cause = Qor.QorStartParamRead(qor, texts.Pointers, (uint)names.Length, 1000, out stream);
        if (!Worked("stream", cause)) return false;
        var samples = new Qor.QorSample[50];
        uint total = 0;
        while (Qor.QorNowMs() < start + 1000 && (cause == Qor.QOR_OK || cause == Qor.QOR_NOT_READY))
        {
            uint count;
            cause = Qor.QorReadParamStream(stream, samples, (uint)samples.Length, out count, 100);
            if (cause != Qor.QOR_OK) continue;  // QOR_NOT_READY: none has come
            total += count;
            for (uint i = 0; i < count; ++i)
                Console.WriteLine("value: {0} = {1} after {2} ms, missed {3}", names[samples[i].name],
                                  Fixed(samples[i].value, "F2"), Fixed(samples[i].timeMs - start, "F0"),
                                  samples[i].missed);
        }
        return Worked("stream end", Qor.QorStopParamRead(stream)) && total > 0;
    }

    // Each trouble code has four texts, which stay with this thread until its next result.
    static bool ReadCodes(IntPtr qor, out uint count)
    {
        var codes = new Qor.QorDtc[100];
        int cause = Qor.QorGetDtcByStatus(qor, 1000, codes, (uint)codes.Length, out count);
        if (cause != Qor.QOR_OK) return Worked("trouble codes", cause);
        Console.WriteLine("trouble codes: " + count);
        for (uint row = 0; row < count; ++row)
        {
            Console.Write("  0x{0:X4} status {1}", codes[row].code, codes[row].status);
            for (uint column = 0; column < 4; ++column)
                Console.Write(", " + Qor.TextOf((byte[] text, uint capacity, out uint needed) =>
                    Qor.QorResultText(qor, row, column, text, capacity, out needed)));
            Console.WriteLine();
        }
        return true;
    }

    static bool GoRound(IntPtr qor)
    {
        uint count;
        return Worked("ping", Qor.QorPingQor(qor, 10000)) &&  // QOR may still be starting
               ConnectEcu(qor) && ReadAndWrite(qor) && BeRefused(qor) && StreamValues(qor) &&
               ReadCodes(qor, out count) && Worked("clear", Qor.QorClearDtc(qor, 1000)) &&
               ReadCodes(qor, out count) && count == 0;
    }

    static int Main(string[] arguments)
    {
        if (arguments.Length != 1)
        {
            Console.Error.WriteLine("usage: Tour SETTINGS");
            return 2;
        }
        Console.WriteLine("library: " + Qor.TextOf(Qor.QorVersionText()));
        IntPtr qor;
        if (!Worked("open", Qor.QorOpen(arguments[0], 100, "", out qor))) return 1;
        bool good = GoRound(qor);
        if (!Worked("close", Qor.QorClose(qor))) good = false;  // disconnects the ECU, shuts QOR down
        return good ? 0 : 1;
    }
}

// QorControl.h, which says what each function does. Names and numbers are those of the header.
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
