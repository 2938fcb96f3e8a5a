// Compares the C# declarations of the package for .NET, compiled with this file, with what the C headers say:
//
//     Layout.exe FACT...      FACT: "size RECORD N", "place RECORD FIELD N", "value NAME N"
//
// and round-trips texts through the unmanaged buffer.

using System;
using System.Collections.Generic;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using Orlindex;

internal static class Layout
{
    private static int failures;

    private static void Check(string what, bool good)
    {
        if (good)
            return;
        ++failures;
        Console.WriteLine("error: " + what);
    }

    private static Type Record(string name)
    {
        Type record = typeof(Talix).Assembly.GetType("Orlindex." + name);
        if (record == null)
            throw new ArgumentException("there is no " + name);
        return record;
    }

    private static int Size(Type type)
    {
        return Marshal.SizeOf(type.IsEnum ? Enum.GetUnderlyingType(type) : type);
    }

    private static long ValueOf(string name)
    {
        foreach (Type type in typeof(Talix).Assembly.GetTypes().Where(each => each.IsEnum))
        {
            if (Enum.IsDefined(type, name))
                return Convert.ToInt64(Enum.Parse(type, name));
        }
        throw new ArgumentException("there is no " + name);
    }

    private static void CheckFact(string fact)
    {
        string[] words = fact.Split(' ');
        long expected = long.Parse(words[words.Length - 1]);
        long found;
        if (words[0] == "size")
            found = Size(Record(words[1]));
        else if (words[0] == "place")
            found = Marshal.OffsetOf(Record(words[1]), words[2]).ToInt64();
        else
            found = ValueOf(words[1]);
        Check(fact + ": is " + found, found == expected);
    }

    private static void CheckFields(IEnumerable<string> facts)
    {
        foreach (Type record in typeof(Talix).Assembly.GetTypes().Where(each => each.IsValueType && !each.IsEnum))
        {
            foreach (FieldInfo field in record.GetFields())
            {
                string begin = "place " + record.Name + " " + field.Name + " ";
                Check("nothing is known of " + record.Name + "." + field.Name,
                      field.IsStatic || facts.Any(fact => fact.StartsWith(begin, StringComparison.Ordinal)));
            }
        }
    }

    private static void CheckTexts()
    {
        foreach (string text in new[] { "", "Sam", "J\u00fcrgen \u4e2d\u6587 \U0001F600" })
        {
            using (Utf8Buffer buffer = new Utf8Buffer(text))
                Check("round trip of " + text, buffer.Text == text);
        }
        using (Utf8Buffer full = new Utf8Buffer(3))
        {
            for (int i = 0; i < 3; ++i)
                Marshal.WriteByte(full.Pointer, i, (byte)'x');
            Check("a text without a zero ends at the buffer's end", full.Text == "xxx");
        }
    }

    public static int Main(string[] facts)
    {
        foreach (string fact in facts)
            CheckFact(fact);
        CheckFields(facts);
        CheckTexts();
        Console.WriteLine(facts.Length + " facts, " + failures + " failures");
        return facts.Length > 0 && failures == 0 ? 0 : 1;
    }
}
