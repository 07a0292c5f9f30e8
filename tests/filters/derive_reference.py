#!/usr/bin/env python3
"""Derives the expected filter outputs used by FilterArithmeticTest.cpp.

Independent of the C++ code: single-precision steps are rounded exactly from rationals
(round-half-even to 24 bits), double steps use Python floats and math.pow. Prints C++ initialisers
with the float bit patterns. Run it by hand after changing a scenario; the build does not use it.
"""
import math
import struct
from fractions import Fraction as F


def round32(x):
    x = F(x)
    if x == 0:
        return 0.0
    sign = -1 if x < 0 else 1
    a = abs(x)
    e = a.numerator.bit_length() - a.denominator.bit_length()
    if F(2) ** e > a:
        e -= 1
    q = max(e, -126) - 23
    n = round(a / F(2) ** q)  # Fraction rounds half to even
    r = F(n) * F(2) ** q
    if r >= F(2) ** 128:
        return sign * math.inf
    return sign * float(r)


def bits(f):
    return struct.unpack("<I", struct.pack("<f", f))[0]


def f32(x):
    return round32(F(x))


def mul(a, b):
    return round32(F(a) * F(b))


def div(a, b):
    return round32(F(a) / F(b))


def sub(a, b):
    return round32(F(a) - F(b))


def fma(a, b, c):
    return round32(F(a) * F(b) + F(c))


M1, M2 = 0.1593017578125, 78.84375
C1, C2, C3 = 0.8359375, 18.8515625, 18.6875


def encode(x):
    y = max(mul(x, f32(0.0001)), 0.0)
    p = math.pow(y, M1)
    return f32(math.pow(max((C1 + C2 * p) / (1 + C3 * p), 0.0), M2))


def decode(b):
    q = math.pow(b, 0.012683313515655966)
    q = min(q, 1.0087792641140467)
    r = max((q - C1) / (C2 - C3 * q), 0.0)
    return mul(f32(math.pow(r, 6.277394636015326)), 10000.0)


class Ambient:
    def __init__(self, t_ns, fused=True):
        self.first, self.last, self.time = True, 0.0, t_ns
        self.rise, self.fall, self.min_ms = f32(0.02), f32(0.004), 50.0
        self.fused = fused

    def filter(self, x, now_ns):
        x = f32(x)
        if self.first:
            self.last, self.first = x, False
        prev = self.last
        ds = now_ns // 10**9 - self.time // 10**9
        dn = now_ns % 10**9 - self.time % 10**9
        us = ds * 1000000 + int(dn / 1000)  # truncation toward zero
        ms = div(f32(us), 1000.0)
        if ms < self.min_ms:
            return prev
        speed = self.rise if prev < x else self.fall
        a = mul(div(mul(ms, 24.0), 1000.0), speed)
        a = min(a, 1.0) if a >= 0 else 0.0
        ein, eprev = encode(x), encode(prev)
        if self.fused:
            b = fma(ein, a, mul(sub(1.0, a), eprev))
        else:
            b = round32(F(mul(ein, a)) + F(mul(sub(1.0, a), eprev)))
        b = min(max(b, 0.0), f32(1.98))
        out = decode(b)
        self.time, self.last = now_ns, out
        return out


W_IN = struct.unpack("<f", struct.pack("<I", 0x3E4CCCCC))[0]


def backlight(inputs, fused=True, w_in=W_IN):
    out, prev = [], None
    for x in inputs:
        x = f32(x)
        p = x if prev is None else prev
        if fused:
            y = fma(p, f32(0.8), mul(x, w_in))
        else:
            y = round32(F(mul(p, f32(0.8))) + F(mul(x, w_in)))
        out.append(y)
        prev = y
    return out


MS = 10**6


def ambient_trace(steps, start_ns=0, fused=True):
    flt = Ambient(start_ns, fused)
    return [flt.filter(x, t) for x, t in steps]


def show(name, values):
    print(f"// {name}")
    print("{" + ", ".join(f"0x{bits(v):08X}u" for v in values) + "}")


# Times are absolute nanoseconds on the fake clock; the filter is built at start_ns.
AMBIENT_MAIN = [
    (100.0, 1000 * MS),     # first sample, after 1 s: blended with itself
    (1000.0, 2000 * MS),    # rise, alpha 0.48
    (10.0, 2030 * MS),      # too soon: previous output
    (10.0, 2060 * MS),      # fall after 60 ms accumulated
    (20000.0, 5000 * MS),   # alpha capped at 1, encoded above 1
    (1e30, 8000 * MS),      # blend cut at 1.98
    (-5.0, 8100 * MS),      # negative lux encodes as 0
]
show("ambient main", ambient_trace(AMBIENT_MAIN))
# Built at 1 s + 1000 ns, updated at 2 s + 1 ns: the nanosecond difference is -999 and truncates
# to 0 us, giving exactly 1000000 us; a floor would give 999999 us.
T0 = 10**9 + 1000
show("ambient truncation", ambient_trace([(50.0, T0), (400.0, 2 * 10**9 + 1)], start_ns=T0))
print("// alpha exactly 1 at the 2.1 s boundary")
show("ambient step", ambient_trace([(10.0, 0), (300.0, 2100 * MS)], start_ns=0))
show("ambient 999999 us", ambient_trace([(50.0, T0), (400.0, T0 + 999999000)], start_ns=T0))

BACKLIGHT = [200.0, 10.0, 10.0, 255.0, 0.0, 37.0, 128.0]
show("backlight", backlight(BACKLIGHT))
show("backlight unfused", backlight(BACKLIGHT, fused=False))
show("backlight 0.2f weight", backlight(BACKLIGHT, w_in=f32(0.2)))

# Search an ambient case where the fused blend differs from the unfused one.
for lux in range(1, 3000):
    steps = [(7.0, 0), (float(lux), 1000 * MS)]
    a, b = ambient_trace(steps), ambient_trace(steps, fused=False)
    if a != b:
        print(f"// fused/unfused differ for 7 -> {lux} after 1 s")
        show("fused", a)
        show("unfused", b)
        break

# Search a backlight step where fusing matters.
found = False
for first in range(0, 256):
    for second in range(0, 256):
        seq = [float(first), float(second), float(second)]
        if backlight(seq) != backlight(seq, fused=False):
            show(f"backlight fused {seq}", backlight(seq))
            show("backlight unfused", backlight(seq, fused=False))
            found = True
            break
    if found:
        break
