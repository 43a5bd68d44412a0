"""The worker pool and the settings of the process, as context managers."""

from __future__ import annotations

import contextlib
import numbers
import operator
from typing import Any, Iterator, List, Optional, Tuple, Union

from ._errors import PoolClosed, Timeout, check
from ._native import library

# Works need two rows for each thread of the pool, which has 16 at most, and some leave out rows at the borders.
MIN_POOL_ROWS = 2 * 16 + 8

_DEMOSAICS = {"bilinear": 0, "adaptive": 1}
_THREADS = {"caller": 0, "auto": 1}

# Buffers that workers may still be in, after a time-out: they live until the pool has ended.
_abandoned: List[Tuple[Any, ...]] = []


class Pool:
    """The worker pool of the process, for as long as a `with` block lasts.

        with prismoutl.Pool(threads=4, timeout=5.0) as pool:
            prismoutl.convert(frame, "BayerRG8", threads=pool)

    threads: 0 for one less than there are processors. timeout: seconds that a call waits, None for ever. priority of
    the threads: -2 to 2. One Pool at a time. Without one, the first call that needs the pool starts it.
    """

    def __init__(self, threads: int = 0, timeout: Optional[float] = 1.0, priority: int = 0) -> None:
        threads = whole_number("threads", threads, 0, 0x7FFFFFFF, " (0 for one less than there are processors)")
        if timeout is not None and not isinstance(timeout, numbers.Real):
            raise TypeError(f"timeout is a number of seconds, or None for ever, not {timeout!r}")
        if timeout is not None and not 0 <= timeout < 4294967:
            raise ValueError(f"timeout is 0 to 4294966 seconds, or None for ever, not {timeout}")
        priority = whole_number("priority", priority, -2, 2)
        self._open = True
        check(library.StartMPThreads(threads), "starting the pool")
        check(
            library.SetMPTimeout_msec(0xFFFFFFFF if timeout is None else round(timeout * 1000)),
            "setting the timeout",
        )
        check(library.SetMPThreadPriority(priority), "setting the priority")

    @property
    def threads(self) -> int:
        """The number of threads; 0 when closed."""
        return int(library.GetMPCount()) if self._open else 0

    @property
    def is_open(self) -> bool:
        return self._open

    def close(self) -> None:
        """Waits for the threads. No conversion may run on the pool beside it."""
        if self._open:
            self._open = False
            library.TerminateMPThreads()
            _abandoned.clear()

    def __enter__(self) -> "Pool":
        if not self._open:
            raise PoolClosed("entering the pool")
        return self

    def __exit__(self, *_: object) -> None:
        self.close()


Threads = Union[None, str, Pool]


def whole_number(name: str, value: Any, first: int, last: int, meaning: str = "") -> int:
    """An argument that is a whole number of a range, of any type that is one."""
    try:
        number = operator.index(value)
    except TypeError:
        raise TypeError(f"{name} is a whole number{meaning}, not {value!r}") from None
    if not first <= number <= last:
        raise ValueError(f"{name} is {first} to {last}{meaning}, not {number}")
    return number


def uses_pool(threads: Threads, height: int) -> bool:
    """Whether a conversion of so many rows runs on the pool."""
    safe = height >= MIN_POOL_ROWS and height % 2 == 0
    if threads is None:
        threads = "auto" if library.GetProcMode() == 1 else "caller"
    if threads == "caller":
        return False
    if threads == "auto":
        return safe
    if not isinstance(threads, Pool) and threads != "pool":
        raise ValueError(f"threads is 'auto', 'caller', 'pool' or a Pool, not {threads!r}")
    if isinstance(threads, Pool) and not threads.is_open:
        raise PoolClosed("converting")
    if not safe:
        raise ValueError(
            f"the pool needs an even number of rows and {MIN_POOL_ROWS} or more, not {height}; use threads='auto'"
        )
    return True


def check_pooled(status: int, operation: str, *buffers: Any) -> None:
    """As check; after a time-out the buffers live on, for workers may still be in them."""
    if status == Timeout.status:
        _abandoned.append(buffers)
    check(status, operation)


def default_demosaic() -> str:
    return "adaptive" if library.GetBayerConvMode() == 1 else "bilinear"


@contextlib.contextmanager
def settings(*, demosaic: Optional[str] = None, threads: Optional[str] = None) -> Iterator[None]:
    """The library's settings, which conversions follow that do not say otherwise, for a `with` block.

    demosaic: "bilinear" or "adaptive". threads: "auto" or "caller". They are the process's: other threads see them.
    """
    if demosaic is not None and demosaic not in _DEMOSAICS:
        raise ValueError(f"demosaic is 'bilinear' or 'adaptive', not {demosaic!r}")
    if threads is not None and threads not in _THREADS:
        raise ValueError(f"threads is 'auto' or 'caller', not {threads!r}")
    before = library.GetBayerConvMode(), library.GetProcMode()
    if demosaic is not None:
        library.SetBayerConvMode(_DEMOSAICS[demosaic])
    if threads is not None:
        library.SetProcMode(_THREADS[threads])
    try:
        yield
    finally:
        library.SetBayerConvMode(before[0])
        library.SetProcMode(before[1])
