"""Wrong use raises an exception that names what was wrong and what to do."""

import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import numpy as np
import prismoutl
from prismoutl import _errors

FRAME = np.zeros((4, 6), np.uint8)
WORDS = np.zeros((4, 6), np.uint16)


class Errors(unittest.TestCase):
    def expect(self, error, words, call, *arguments, **named):
        with self.assertRaises(error) as raised:
            call(*arguments, **named)
        for word in words:
            self.assertIn(word, str(raised.exception))

    def test_a_missing_library(self):
        environment = dict(os.environ, PRISMOUTL_LIBRARY="/nowhere/libPrismoUtl.so.1")
        command = [sys.executable, "-c", "import prismoutl"]
        tried = subprocess.run(command, env=environment, stderr=subprocess.PIPE, text=True)
        self.assertEqual(tried.returncode, 1)
        for word in "ImportError", "/nowhere/libPrismoUtl.so.1", "libprismoutl1", "libturbojpeg0":
            self.assertIn(word, tried.stderr)

    def test_formats(self):
        self.expect(ValueError, ["'BayerRG13'", "BayerRG12"], prismoutl.convert, FRAME, "BayerRG13")
        self.expect(ValueError, ["'?'", "FORMATS"], prismoutl.convert, FRAME, "?")
        self.expect(ValueError, ["0x00000007", "FORMATS"], prismoutl.convert, FRAME, 7)
        self.expect(TypeError, ["float"], prismoutl.convert, FRAME, 1.5)
        self.expect(TypeError, ["needs its format"], prismoutl.convert, FRAME)

    def test_types(self):
        self.expect(TypeError, ["uint16", "uint8", "astype"], prismoutl.convert, FRAME, "BayerRG12")
        self.expect(TypeError, ["uint8", "uint16", "astype"], prismoutl.convert, WORDS, "BayerRG8")
        self.expect(TypeError, ["float64"], prismoutl.convert, FRAME.astype(float), "BayerRG8")
        self.expect(TypeError, [">u2", "astype"], prismoutl.convert, WORDS.astype(">u2"), "BayerRG12")
        self.expect(TypeError, ["int16"], prismoutl.convert, WORDS.astype(np.int16), "BayerRG12", size=(6, 4))
        self.expect(TypeError, ["str"], prismoutl.convert, "frame.rwh", "Mono8")
        self.expect(TypeError, ["list"], prismoutl.convert, [1, 2], "Mono8", size=(2, 1))

    def test_shapes_and_sizes(self):
        convert = prismoutl.convert
        self.expect(ValueError, ["(height, width)", "(24,)", "size="], convert, FRAME.reshape(-1), "Mono8")
        self.expect(ValueError, ["(height, width, 3)", "(4, 6)"], convert, FRAME, "RGB8")
        self.expect(ValueError, ["(height, width * 3 / 2)"], convert, FRAME.reshape(-1), "YUV411_8_UYYVYY")
        self.expect(ValueError, ["24 bytes", "23", "check size and format"], convert, FRAME.tobytes()[1:], "Mono8", size=(6, 4))
        self.expect(ValueError, ["24 bytes", "25"], convert, FRAME.tobytes() + b"x", "Mono8", size=(6, 4))
        self.expect(ValueError, ["does not say its width", "size="], convert, FRAME, "Mono8Pad")
        self.expect(ValueError, ["multiple of 2", "6x3", "crop"], convert, FRAME[:3], "BayerRG8")
        self.expect(ValueError, ["multiple of 4"], convert, np.zeros((2, 9), np.uint8), "YUV411_8_UYYVYY")
        self.expect(
            ValueError,
            ["24 bytes", "22"],
            convert,
            np.zeros((2, 11), np.uint8),
            "YUV411_8_UYYVYY",
            size=(8, 2),
        )
        self.expect(ValueError, ["0x4", "1 or more"], convert, np.zeros((4, 0), np.uint8), "Mono8")
        self.expect(ValueError, ["too large", "65536x65536"], convert, b"", "Mono8", size=(65536, 65536))
        self.expect(ValueError, ["(width, height)"], convert, FRAME, "Mono8", size=(1, 2, 3))
        self.expect(ValueError, ["not contiguous", "ascontiguousarray"], convert, FRAME[:, ::2], "Mono8")
        self.expect(ValueError, ["not contiguous", "ascontiguousarray"], convert, FRAME.T, "Mono8")

    def test_outputs(self):
        def convert(out):
            return prismoutl.convert(FRAME, "Mono8", out=out)

        read_only = np.empty((4, 6, 3), np.uint8)
        read_only.flags.writeable = False
        self.expect(ValueError, ["read-only"], convert, read_only)
        self.expect(ValueError, ["(4, 6, 3)", "(4, 6, 4)", "numpy.empty"], convert, np.empty((4, 6, 4), np.uint8))
        self.expect(TypeError, ["uint8", "int8", "numpy.empty"], convert, np.empty((4, 6, 3), np.int8))
        self.expect(TypeError, ["bytearray"], convert, bytearray(72))
        self.expect(ValueError, ["not contiguous"], convert, np.empty((4, 12, 3), np.uint8)[:, ::2])
        both = np.zeros(24 + 72 - 1, np.uint8)
        frame, out = both[:24].reshape(4, 6), both[23:].reshape(4, 6, 3)
        self.expect(ValueError, ["shares memory"], prismoutl.convert, frame, "Mono8", out=out)
        plane = np.empty((4, 6), np.uint8)
        self.expect(
            ValueError,
            ["out[2]", "shares"],
            prismoutl.convert_planes,
            FRAME,
            "BayerRG8",
            (plane, plane.copy(), plane),
        )
        self.expect(ValueError, ["three"], prismoutl.convert_planes, FRAME, "BayerRG8", (plane,))

    def test_choices(self):
        convert = prismoutl.convert
        self.expect(ValueError, ["'RGB'", "BGRA"], convert, FRAME, "Mono8", to="RGB")
        self.expect(ValueError, ["'best'", "adaptive"], convert, FRAME, "BayerRG8", demosaic="best")
        self.expect(ValueError, ["'many'", "caller"], convert, FRAME, "BayerRG8", threads="many")
        self.expect(ValueError, ["40 or more", "not 4", "auto"], convert, FRAME, "BayerRG8", threads="pool")
        self.expect(ValueError, ["RGB8", "grey"], convert, np.zeros((2, 2, 3), np.uint8), "RGB8", to="grey")
        self.expect(ValueError, ["BGRA10"], convert, np.zeros((2, 2, 4), np.uint16), "BGRA10")
        self.expect(ValueError, ["Mono8", "planes"], prismoutl.convert_planes, FRAME, "Mono8")
        self.expect(
            ValueError, ["BGRA8", "numpy.flip"], prismoutl.mirror, np.zeros((2, 2, 4), np.uint8), "BGRA8"
        )
        self.expect(ValueError, ["grey"], prismoutl.mosaic, FRAME, "BayerRG8")
        self.expect(ValueError, ["BGRA8"], prismoutl.mosaic, np.zeros((2, 2, 3), np.uint8), "BGRA8")
        self.expect(ValueError, ["3x2"], prismoutl.mosaic, np.zeros((2, 3, 3), np.uint8), "BayerRG8")

    def test_files(self):
        with tempfile.TemporaryDirectory() as folder:
            folder = Path(folder)
            missing, nowhere = folder / "missing.rwh", folder / "none" / "picture"
            self.expect(
                prismoutl.FileOpenError,
                [str(missing), "UTL_STS_FILE_OPEN_ERROR", "0x2001", "check that the file exists"],
                prismoutl.load_raw,
                missing,
            )
            self.expect(OSError, [str(nowhere)], prismoutl.save_raw, nowhere, FRAME, "Mono8")
            picture = np.zeros((4, 4, 3), np.uint8)
            self.expect(OSError, [str(nowhere)], prismoutl.save_bmp, nowhere, picture)
            self.expect(
                prismoutl.FileNotFound,
                ["UTL_STS_FILE_NOT_FOUND", "create"],
                prismoutl.save_jpeg,
                nowhere,
                picture,
            )
            self.expect(ValueError, ["101"], prismoutl.save_jpeg, folder / "p.jpg", picture, 101)
            self.expect(TypeError, ["quality", "'90'"], prismoutl.save_jpeg, folder / "p.jpg", picture, "90")
            self.expect(ValueError, ["grey"], prismoutl.save_jpeg, folder / "p.jpg", FRAME)
            self.expect(TypeError, ["uint16"], prismoutl.save_bmp, folder / "p.bmp", WORDS)
            self.expect(
                ValueError, ["(4, 6, 2)"], prismoutl.save_bmp, folder / "p.bmp", np.zeros((4, 6, 2), np.uint8)
            )
            self.assertEqual(list(folder.iterdir()), [])

            whole = folder / "whole.rwh"
            prismoutl.save_raw(whole, FRAME, "Mono8")
            content = whole.read_bytes()
            for damaged, word in (
                (content[:-1], "39 bytes"),
                (content[:12] + b"\x07" + content[13:], "rows of 7 bytes"),
                (b"\x02" + content[1:], "0x01080002"),
                (content[:4] + b"\xff" * 8 + content[12:], "too large"),
                (content[:15], "15 bytes, where the header alone has 16"),
                (b"", "0 bytes"),
            ):
                whole.write_bytes(damaged)
                self.expect(prismoutl.FileReadError, [str(whole), word], prismoutl.load_raw, whole)
            self.expect(prismoutl.FileOpenError, [str(folder), "is a folder"], prismoutl.load_raw, folder)
            self.expect(OSError, [str(folder), "the folder to write it in"], prismoutl.save_bmp, folder, picture)
            full = prismoutl.save_jpeg, "/dev/full", picture
            self.expect(prismoutl.Failure, ["/dev/full", "space on the disk"], *full)

    def test_pools(self):
        self.expect(ValueError, ["-1"], prismoutl.Pool, threads=-1)
        self.expect(TypeError, ["threads", "'4'"], prismoutl.Pool, threads="4")
        self.expect(TypeError, ["threads", "2.5"], prismoutl.Pool, threads=2.5)
        self.expect(TypeError, ["timeout", "'1'", "seconds"], prismoutl.Pool, timeout="1")
        self.expect(ValueError, ["timeout", "nan"], prismoutl.Pool, timeout=float("nan"))
        self.expect(TypeError, ["priority", "None"], prismoutl.Pool, priority=None)
        self.expect(ValueError, ["-3"], prismoutl.Pool, timeout=-3)
        self.expect(ValueError, ["-2 to 2", "3"], prismoutl.Pool, priority=3)
        pool = prismoutl.Pool(threads=1)
        self.assertGreaterEqual(pool.threads, 1)
        pool.close()
        pool.close()
        self.assertEqual(pool.threads, 0)
        rows = np.zeros((48, 8), np.uint8)
        self.expect(prismoutl.PoolClosed, ["make a new"], prismoutl.convert, rows, "Mono8", threads=pool)
        self.expect(prismoutl.PoolClosed, ["make a new"], pool.__enter__)

    def test_a_timeout_keeps_the_buffers_until_the_pool_ends(self):
        from prismoutl import _pool

        frame = np.zeros((4000, 4000), np.uint8)
        with prismoutl.Pool(timeout=0.0) as pool:
            with self.assertRaises(prismoutl.Timeout) as raised:
                for _ in range(100):
                    prismoutl.convert(frame, "BayerRG8", threads=pool)
            self.assertIn("UTL_STS_TIMEOUT", str(raised.exception))
            self.assertIsInstance(raised.exception, TimeoutError)
            self.assertEqual(len(_pool._abandoned), 1)
            self.assertIs(_pool._abandoned[0][0], frame)
        self.assertEqual(_pool._abandoned, [])

    def test_statuses_are_those_of_the_header(self):
        header = Path(__file__).parents[2].joinpath("src/api/PrismoUtl.h").read_text()
        statuses = dict(re.findall(r"#define (UTL_STS_\w+) (\w+)u\n", header))
        named = {error.name: error.status for error in _errors._BY_STATUS.values()}
        self.assertEqual(
            {name: int(value, 0) for name, value in statuses.items() if name != "UTL_STS_SUCCESS"}, named
        )
        codes = {int(code, 16) for code in re.findall(r"#define PRISMO_[A-Z0-9_]+ (0x\w+)u\n", header)}
        self.assertEqual(codes, {format.code for format in prismoutl.FORMATS.values()})
        with self.assertRaises(prismoutl.Error) as raised:
            _errors.check(4711, "trying")
        self.assertEqual(raised.exception.status, 4711)


class Files(unittest.TestCase):
    def test_frames_come_back_as_they_were(self):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "a främe.rwh"
            words = np.arange(24, dtype=np.uint16).reshape(4, 6)
            prismoutl.save_raw(path, words, "BayerGB12")
            frame = prismoutl.load_raw(path)
            self.assertEqual((frame.format.name, frame.width, frame.height), ("BayerGB12", 6, 4))
            np.testing.assert_array_equal(frame.data, words)
            np.testing.assert_array_equal(prismoutl.convert(frame), prismoutl.convert(words, "BayerGB12"))
            prismoutl.save_raw(str(path), frame)
            picture = prismoutl.convert(frame)
            for save, name in (prismoutl.save_bmp, "p.bmp"), (prismoutl.save_jpeg, "p.jpg"):
                save(Path(folder) / name, picture)
            self.assertEqual((Path(folder) / "p.bmp").stat().st_size, 54 + 4 * 20)
            self.assertEqual((Path(folder) / "p.jpg").read_bytes()[:2], b"\xff\xd8")


class Settings(unittest.TestCase):
    def test_are_followed_and_put_back(self):
        frame = np.random.default_rng(1).integers(0, 256, (48, 16), np.uint8)
        adaptive = prismoutl.convert(frame, "BayerRG8", demosaic="adaptive")
        bilinear = prismoutl.convert(frame, "BayerRG8")
        self.assertTrue((adaptive != bilinear).any())
        with prismoutl.settings(demosaic="adaptive", threads="caller"):
            np.testing.assert_array_equal(prismoutl.convert(frame, "BayerRG8"), adaptive)
            with prismoutl.settings(demosaic="bilinear"):
                np.testing.assert_array_equal(prismoutl.convert(frame, "BayerRG8"), bilinear)
        np.testing.assert_array_equal(prismoutl.convert(frame, "BayerRG8"), bilinear)
        with self.assertRaisesRegex(ValueError, "'best'"):
            with prismoutl.settings(demosaic="best"):
                pass

    def test_threads_work_beside_each_other(self):
        from concurrent.futures import ThreadPoolExecutor

        frames = [np.full((64, 64), value, np.uint8) for value in range(8)]
        with ThreadPoolExecutor(4) as executor:
            pictures = list(executor.map(lambda frame: prismoutl.convert(frame, "BayerRG8"), frames * 10))
        for index, picture in enumerate(pictures):
            self.assertTrue((picture == index % 8).all())


if __name__ == "__main__":
    unittest.main()
