// Prints what a program declares of QorControlC.dll in its class Qor, a line per thing, with tabs.
// usage: Declarations PROGRAM
using System;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;

static class Declarations
{
    const BindingFlags Own = BindingFlags.Public | BindingFlags.NonPublic | BindingFlags.Static |
                             BindingFlags.Instance | BindingFlags.DeclaredOnly;

    static T Attribute<T>(ICustomAttributeProvider provider) where T : Attribute
    {
        return (T)provider.GetCustomAttributes(typeof(T), false).FirstOrDefault();
    }

    // "String/LPUTF8Str", "Double[]/out", "UInt32&"
    static string Parameter(ParameterInfo parameter)
    {
        var marshal = Attribute<MarshalAsAttribute>(parameter);
        string text = parameter.ParameterType.Name;
        if (marshal != null) text += "/" + marshal.Value;
        if (parameter.IsOut && !parameter.ParameterType.IsByRef) text += "/out";
        return text;
    }

    static void Print(params object[] words)
    {
        Console.WriteLine(string.Join("\t", words));
    }

    static void PrintFunction(string kind, object convention, MethodInfo method, string name)
    {
        Print(kind, name, convention, method.ReturnType.Name,
              string.Join(",", method.GetParameters().Select(Parameter)));
    }

    static void PrintType(Type type)
    {
        var pointer = Attribute<UnmanagedFunctionPointerAttribute>(type);
        if (pointer != null)
            PrintFunction("callback", pointer.CallingConvention, type.GetMethod("Invoke"), type.Name);
        if (!type.IsValueType) return;
        foreach (FieldInfo field in type.GetFields(Own))
            Print("field", type.Name, field.Name, field.FieldType.Name,
                  Marshal.OffsetOf(type, field.Name));
        Print("size", type.Name, Marshal.SizeOf(type));
    }

    static int Main(string[] arguments)
    {
        Type declared = Assembly.LoadFrom(arguments[0]).GetType("Qor", true);
        foreach (FieldInfo field in declared.GetFields(Own).Where(field => field.Name.StartsWith("QOR_")))
            Print("constant", field.Name, field.GetRawConstantValue());
        foreach (Type type in declared.GetNestedTypes()) PrintType(type);
        foreach (MethodInfo method in declared.GetMethods(Own))
        {
            var import = Attribute<DllImportAttribute>(method);
            if (import == null) continue;
            PrintFunction("function", import.Value + "/" + import.CallingConvention, method,
                          import.EntryPoint ?? method.Name);
        }
        return 0;
    }
}
