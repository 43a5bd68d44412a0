// Converts a raw frame file to a BMP picture: mono Convert.exe FRAME.rwh PICTURE.bmp
// `PrismoUtl` is what an application would take over: the functions that it calls, and statuses as exceptions.
using System;
using System.Runtime.InteropServices;

static class PrismoUtl
{
    const string Library = "libPrismoUtl.so.1";  // PrismoUtl64.dll on Windows

    [DllImport(Library)]
    public static extern uint LoadRWH(string path, ref IntPtr buffer, out uint pixelFormat, out uint width,
                                      out uint height, out uint rowSize);

    [DllImport(Library)]
    public static extern void FreeRWH(IntPtr buffer);

    [DllImport(Library)]
    public static extern uint ToBGR([Out] byte[] dst, IntPtr src, uint pixelFormat, uint width, uint height,
                                    uint method, byte multiThread, byte pad);

    [DllImport(Library)]
    public static extern uint SaveBmpRGBStrm(byte[] image, uint width, uint height, uint stride, string path);

    public static void Check(uint status, string operation)
    {
        if (status != 0) throw new Exception(string.Format("{0} failed with status 0x{1:x}", operation, status));
    }
}

static class Program
{
    static int Main(string[] arguments)
    {
        if (arguments.Length != 2)
        {
            Console.Error.WriteLine("usage: Convert.exe FRAME.rwh PICTURE.bmp");
            return 1;
        }
        IntPtr frame = IntPtr.Zero;
        try
        {
            uint format, width, height, rowSize;
            PrismoUtl.Check(PrismoUtl.LoadRWH(arguments[0], ref frame, out format, out width, out height, out rowSize),
                            "reading " + arguments[0]);
            var bgr = new byte[(long)width * height * 3];
            // An array stays in place for the length of a call only. On the caller's thread nobody has it longer.
            PrismoUtl.Check(PrismoUtl.ToBGR(bgr, frame, format, width, height, 0, 0, 0), "converting " + arguments[0]);
            PrismoUtl.Check(PrismoUtl.SaveBmpRGBStrm(bgr, width, height, width * 3, arguments[1]),
                            "writing " + arguments[1]);
            return 0;
        }
        catch (Exception error)
        {
            Console.Error.WriteLine(error.Message);
            return 1;
        }
        finally
        {
            PrismoUtl.FreeRWH(frame);
        }
    }
}
