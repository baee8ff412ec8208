#!/usr/bin/env python3
"""Writes a Fortran program with N small routines (default 20000) that the main program
calls in turn; each adds to a checksum that the program prints at the end.

usage: generate_many_routines.py OUT.f95 [N]"""
import sys


def routine(i):
    kind = i % 4
    name = f"r{i:05d}"
    if kind == 0:
        return (f"subroutine {name}(acc)\n  integer(8) :: acc\n  integer :: k\n"
                f"  do k = 1, 3\n    acc = acc + k * {i % 97}\n  end do\nend subroutine {name}\n")
    if kind == 1:
        return (f"subroutine {name}(acc)\n  integer(8) :: acc\n  real(8) :: v(0:2)\n"
                f"  v(0) = {i % 13}.0d0\n  v(2) = v(0) * 2\n  acc = acc + int(v(2))\nend subroutine {name}\n")
    if kind == 2:
        return (f"subroutine {name}(acc)\n  integer(8) :: acc\n  integer, save :: calls = 0\n"
                f"  calls = calls + 1\n  if (mod(acc, 2_8) == 0) then\n    acc = acc + calls\n"
                f"  else\n    acc = acc + {i % 7}\n  end if\nend subroutine {name}\n")
    return (f"subroutine {name}(acc)\n  integer(8) :: acc\n  character(len=4) :: tag\n"
            f"  tag = 'r{i % 1000:03d}'\n  acc = acc + ichar(tag(2:2)) - 48\nend subroutine {name}\n")


def expected(n):
    acc = 0
    for i in range(n):
        kind = i % 4
        if kind == 0:
            acc += 6 * (i % 97)
        elif kind == 1:
            acc += 2 * (i % 13)
        elif kind == 2:
            acc += 1 if acc % 2 == 0 else i % 7
        else:
            acc += (i % 1000) // 100
    return acc


def main():
    out = sys.argv[1]
    n = int(sys.argv[2]) if len(sys.argv) > 2 else 20000
    with open(out, "w") as f:
        f.write("program many_routines\n  integer(8) :: acc\n  acc = 0\n")
        for i in range(n):
            f.write(f"  call r{i:05d}(acc)\n")
        f.write("  print *, 'routines', " + str(n) + ", 'checksum', acc\nend program many_routines\n")
        for i in range(n):
            f.write(routine(i))
    with open(out.rsplit(".", 1)[0] + ".expected", "w") as f:
        f.write(f" routines {n} checksum {expected(n)}\n")


if __name__ == "__main__":
    main()
