// Reads a value. The argument is QOR's settings file.
using System;

static class First
{
    static int Main(string[] arguments)
    {
        IntPtr qor;
        uint count;
        var speed = new double[1];
        int cause = Qor.QorOpen(arguments[0], 100, "", out qor);
        if (cause == Qor.QOR_OK) cause = Qor.QorPingQor(qor, 10000);  // QOR may still be starting
        if (cause == Qor.QOR_OK)
            cause = Qor.QorConnect(qor, IntPtr.Zero, Qor.QOR_CONNECT_DEFAULT, 60000);
        if (cause == Qor.QOR_OK)
            cause = Qor.QorGetParamData(qor, "EngineSpeed", 1000, speed, 1, out count);
        if (cause == Qor.QOR_OK)
            Console.WriteLine("EngineSpeed = " + speed[0].ToString("F0"));
        else
            Console.WriteLine(Qor.TextOf(Qor.QorCauseName(cause)) + ": " + Qor.TextOf(Qor.QorLastSentence));
        Qor.QorClose(qor);  // the end; also of QOR, if the settings name its program
        return cause;
    }
}
