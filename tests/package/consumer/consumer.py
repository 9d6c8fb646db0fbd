# SPDX-License-Identifier: MIT
"""A program that uses nothing but the shared library, which it is given."""
import ctypes
import sys

koru = ctypes.CDLL(sys.argv[1])
variable = ctypes.c_void_p
koru.cs_getVersion.restype = ctypes.c_char_p
koru.cs_createNamedCSint.argtypes = [ctypes.c_int, ctypes.c_int, ctypes.c_char_p]
koru.cs_createNamedCSint.restype = variable
koru.cs_Add.argtypes = [variable, variable]
koru.cs_Add.restype = variable
koru.cs_EQ.argtypes = [variable, ctypes.c_int]
koru.cs_EQ.restype = ctypes.c_bool
koru.cs_search.argtypes = [ctypes.POINTER(variable), ctypes.c_int, ctypes.c_void_p]
koru.cs_search.restype = ctypes.c_bool
koru.cs_getName.argtypes = [variable]
koru.cs_getName.restype = ctypes.c_char_p
koru.cs_getMin.argtypes = [variable]

koru.cs_init()
print(koru.cs_getVersion().decode())
digits = (variable * 2)(*(koru.cs_createNamedCSint(0, 9, name) for name in (b"x", b"y")))
if not koru.cs_EQ(koru.cs_Add(digits[0], digits[1]), 12):
    sys.exit(1)
if not koru.cs_search(digits, 2, ctypes.cast(koru.cs_findFreeVarNbElements, ctypes.c_void_p)):
    sys.exit(2)
print(", ".join(f"{koru.cs_getName(v).decode()}: {koru.cs_getMin(v)}" for v in digits))
koru.cs_end()
