"""The statuses of the library as exceptions."""

from __future__ import annotations

from typing import Dict, Type


class Error(Exception):
    """What a call of the library ended with."""

    status = 0
    name = ""
    remedy = ""

    def __init__(self, operation: str) -> None:
        super().__init__(operation)
        self.operation = operation

    def __str__(self) -> str:
        return f"{self.operation}: {self.name} (status {self.status:#x}): {self.remedy}"


class InvalidParameter(Error, ValueError):
    status = 13
    name = "UTL_STS_INVALID_PARAMETER"
    remedy = "the library has no such conversion"


class Timeout(Error, TimeoutError):
    status = 18
    name = "UTL_STS_TIMEOUT"
    remedy = "the pool did not finish in time; give Pool a longer timeout, or use threads='caller'"


class FileOpenError(Error, OSError):
    status = 0x2001
    name = "UTL_STS_FILE_OPEN_ERROR"
    remedy = "check that the file exists, or the folder to write it in, and that the rights allow this"


class FileWriteError(Error, OSError):
    status = 0x2002
    name = "UTL_STS_FILE_WRITE_ERROR"
    remedy = "check the space on the disk"


class FileReadError(Error, OSError):
    status = 0x2003
    name = "UTL_STS_FILE_READ_ERROR"
    remedy = "the file is damaged; write it again"


class FileNotFound(Error, FileNotFoundError):
    status = 0x2004
    name = "UTL_STS_FILE_NOT_FOUND"
    remedy = "create the folder first"


class Failure(Error, RuntimeError):
    status = 0xFFFFFFFF
    name = "UTL_STS_FAILURE"
    remedy = "memory, threads or the space on the disk ran out"


class PoolClosed(Error, RuntimeError):
    """Not a status of the library: it would have started another pool."""

    def __str__(self) -> str:
        return f"{self.operation}: the pool was closed; make a new prismoutl.Pool"


_BY_STATUS: Dict[int, Type[Error]] = {
    error.status: error
    for error in (
        InvalidParameter,
        Timeout,
        FileOpenError,
        FileWriteError,
        FileReadError,
        FileNotFound,
        Failure,
    )
}


def check(status: int, operation: str) -> None:
    """Raises the exception of a status other than success."""
    if status == 0:
        return
    if status in _BY_STATUS:
        raise _BY_STATUS[status](operation)
    error = Error(f"{operation}: unknown status {status:#x}")
    error.status = status
    raise error
