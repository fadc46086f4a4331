// A client of "qorctl serve" in C#: connects the ECU with QOR's progress, reads, asks for two things
// at once, is refused, streams for a second. It may have 64 bits, unlike a host that loads the library.
//
// usage: serve_client URL [TOKEN]    the URL is what the server prints, as http://127.0.0.1:8080/
//
// C# 5, so that the compiler that lies on every Windows will do, with the libraries System.Xml,
// System.Xml.Linq and System.Runtime.Serialization. What each step saw goes to standard output; the
// exit code is 0 if all went as it should.
using System;
using System.Globalization;
using System.IO;
using System.Linq;
using System.Net;
using System.Runtime.Serialization.Json;
using System.Text;
using System.Threading;
using System.Xml;
using System.Xml.Linq;

// What the server answered in place of a result.
class Refusal : Exception
{
    public readonly string Cause, Check;

    public Refusal(XElement error)
        : base(Text(error, "sentence") ?? error.Element("message").Value)
    {
        Cause = Text(error, "name");
        Check = Text(error, "check");
    }

    static string Text(XElement error, string name)
    {
        XElement data = error.Element("data");
        return data != null && data.Element(name) != null ? data.Element(name).Value : null;
    }
}

class Server
{
    readonly Uri address;
    readonly string token;
    Thread listener;
    volatile bool isLeaving;
    string client;

    // Called for each event, in a thread of its own.
    public Action<string, XElement> OnEvent = delegate { };

    public Server(string address, string token)
    {
        ServicePointManager.DefaultConnectionLimit = 10; // one is that of the events
        ServicePointManager.Expect100Continue = false;
        this.address = new Uri(address);
        this.token = token;
    }

    // Whoever listens to the events is a client; "hello" comes first. When that connection ends the
    // client has left: its streams end, its actuators are given back.
    public void Join()
    {
        WebResponse response = Request("events").GetResponse();
        var reader = new StreamReader(response.GetResponseStream(), Encoding.UTF8);
        while (client == null && ReadEvent(reader)) { }
        listener = new Thread(() => Listen(response, reader)) { IsBackground = true };
        listener.Start();
    }

    // The server writes a line every second, so that this takes no longer.
    public void Leave()
    {
        isLeaving = true;
        if (listener != null) listener.Join();
    }

    // The result of one method.
    public XElement Call(string method, string parameters)
    {
        XElement answer = Post(RequestOf(1, method, parameters));
        if (answer.Element("error") != null) throw new Refusal(answer.Element("error"));
        return answer.Element("result");
    }

    public static string RequestOf(int id, string method, string parameters)
    {
        return "{\"jsonrpc\":\"2.0\",\"id\":" + id + ",\"method\":\"" + method + "\",\"params\":" + parameters + "}";
    }

    // A request, or several in an array.
    public XElement Post(string message)
    {
        HttpWebRequest request = Request("rpc");
        request.Method = "POST";
        request.ContentType = "application/json";
        request.Timeout = Timeout.Infinite; // a connect may take a minute
        request.Headers["X-Qor-Client"] = client;
        byte[] bytes = Encoding.UTF8.GetBytes(message);
        using (Stream stream = request.GetRequestStream()) stream.Write(bytes, 0, bytes.Length);
        using (WebResponse response = request.GetResponse())
        using (var reader = new StreamReader(response.GetResponseStream(), Encoding.UTF8))
            return Json(reader.ReadToEnd());
    }

    HttpWebRequest Request(string path)
    {
        var request = (HttpWebRequest)WebRequest.Create(new Uri(address, path));
        request.Proxy = null;
        if (token != null) request.Headers["Authorization"] = "Bearer " + token;
        return request;
    }

    // As a tree of elements, the items of an array with the name "item".
    static XElement Json(string text)
    {
        byte[] bytes = Encoding.UTF8.GetBytes(text);
        return XElement.Load(JsonReaderWriterFactory.CreateJsonReader(bytes, XmlDictionaryReaderQuotas.Max));
    }

    void Listen(WebResponse response, StreamReader reader)
    {
        try
        {
            while (ReadEvent(reader)) { }
        }
        catch (IOException) { } // the server has gone
        finally
        {
            response.Close();
        }
    }

    // False at the end.
    bool ReadEvent(StreamReader reader)
    {
        string name = "", data = "", line;
        while ((line = reader.ReadLine()) != null && line != "")
        {
            if (isLeaving) return false;
            if (line.StartsWith("event: ")) name = line.Substring(7);
            if (line.StartsWith("data: ")) data += line.Substring(6);
        }
        if (name == "hello") client = Json(data).Element("client").Value;
        else if (name != "") OnEvent(name, Json(data));
        return line != null;
    }
}

static class ServeClient
{
    static readonly string[] Names = { "EngineSpeed", "OilPressure" };
    static int count;

    static double Number(XElement element)
    {
        return double.Parse(element.Value, CultureInfo.InvariantCulture);
    }

    static string Fixed(XElement element)
    {
        return Number(element).ToString("F2", CultureInfo.InvariantCulture);
    }

    static void Tell(string name, XElement told)
    {
        if (name == "connectProgress") Console.WriteLine("progress: " + told.Element("figure").Value);
        if (name != "values") return;
        foreach (XElement sample in told.Element("samples").Elements())
        {
            XElement[] parts = sample.Elements().ToArray(); // number of the name, value, time, missed
            Interlocked.Increment(ref count);
            Console.WriteLine("value: {0} = {1}, missed {2}", Names[(int)Number(parts[0])], Fixed(parts[1]),
                              parts[3].Value);
        }
    }

    static void GoRound(Server server)
    {
        Console.WriteLine("server: " + server.Call("getState", "{}").Element("version").Value);
        server.Call("connect", "{\"settings\":{\"refreshPeriodMs\":100}}");
        Console.WriteLine("connect: ok");
        XElement speed = server.Call("getParamData", "{\"name\":\"EngineSpeed\"}");
        Console.WriteLine("read: EngineSpeed = " + Fixed(speed.Element("values").Elements().First()));

        XElement[] both = server.Post("[" + Server.RequestOf(1, "getParamData", "{\"name\":\"CylinderCount\"}") + "," +
            Server.RequestOf(2, "getParamDescription", "{\"name\":\"EngineSpeed\"}") + "]")
            .Elements().OrderBy(answer => Number(answer.Element("id"))).ToArray();
        Console.WriteLine("batch: {0} cylinders, speed in {1}",
            Number(both[0].Element("result").Element("values").Elements().First()),
            both[1].Element("result").Element("unit").Value);
        try
        {
            server.Call("getParamData", "{\"name\":\"NoSuchName\"}");
        }
        catch (Refusal refusal)
        {
            Console.WriteLine("refused: {0}: {1}", refusal.Cause, refusal.Message);
        }
        string names = "{\"names\":[\"EngineSpeed\",\"OilPressure\"]}";
        string number = server.Call("startParamRead", names).Element("stream").Value;
        Thread.Sleep(1000);
        server.Call("stopParamRead", "{\"stream\":" + number + "}");
        Console.WriteLine("stream: {0} values", count);
    }

    static int Main(string[] arguments)
    {
        if (arguments.Length < 1)
        {
            Console.Error.WriteLine("usage: serve_client URL [TOKEN]");
            return 2;
        }
        var server = new Server(arguments[0], arguments.Length > 1 ? arguments[1] : null) { OnEvent = Tell };
        try
        {
            server.Join();
            GoRound(server);
            server.Leave();
        }
        catch (Exception error)
        {
            if (!(error is WebException || error is Refusal)) throw;
            Console.Error.WriteLine(error.Message);
            return 1;
        }
        return count > 2 ? 0 : 1;
    }
}
