// A tour of QorControlC.dll in C#: connects an ECU, reads, writes, is refused, streams, reads and
// clears trouble codes. The argument is QOR's settings file. What each step saw goes to standard
// output; the exit code is 0 if all went as it should.
//
// Build it with QorControl.cs, for 32 bits: /platform:x86. It is C# 5, so that the compiler that
// lies on every Windows will do.
using System;
using System.Globalization;

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
        if (!Worked("close", Qor.QorClose(qor))) good = false;  // the end; also of QOR, if the settings name its program
        return good ? 0 : 1;
    }
}
