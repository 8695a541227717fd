"""Keys and buttons as the X server reports them, read and pressed by other code than the helper's.

For tests whose display stays: one that goes away ends the process that uses it.
"""

import contextlib
import ctypes
import functools
import os
import subprocess

_CORE_KEYBOARD = 0x100
_FIRST_KEY, _KEYS = 8, 248


class _State(ctypes.Structure):
    """XkbStateRec."""

    _fields_ = [(name, ctypes.c_ubyte) for name in ("group", "locked_group")] + [
        (name, ctypes.c_ushort) for name in ("base_group", "latched_group")] + [
        (name, ctypes.c_ubyte) for name in (
            "mods", "base_mods", "latched_mods", "locked_mods", "compat_state", "grab_mods",
            "compat_grab_mods", "lookup_mods", "compat_lookup_mods")] + [
        ("ptr_buttons", ctypes.c_ushort)]


@functools.cache
def _xlib():
    xlib = ctypes.CDLL("libX11.so.6")
    xlib.XOpenDisplay.restype = ctypes.c_void_p
    xlib.XGetKeyboardMapping.restype = ctypes.POINTER(ctypes.c_ulong)
    xlib.XStringToKeysym.restype = ctypes.c_ulong
    return xlib


@functools.cache
def _display():
    return ctypes.c_void_p(_xlib().XOpenDisplay(None))


def _ask(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                          timeout=20, check=True).stdout


def mapping():
    """All that the keys mean: as XKB keeps it, and as the core protocol reports it."""
    width = ctypes.c_int()
    symbols = _xlib().XGetKeyboardMapping(_display(), _FIRST_KEY, _KEYS, ctypes.byref(width))
    try:
        told = [symbols[i] for i in range(_KEYS * width.value)]
    finally:
        _xlib().XFree(symbols)
    return _ask("xkbcomp", "-xkb", os.environ["DISPLAY"], "-"), told


def state():
    """The codes of the keys that are down, the modifiers in force, and those of them locked."""
    bits = (ctypes.c_ubyte * 32)()
    _xlib().XQueryKeymap(_display(), bits)
    told = _State()
    _xlib().XkbGetState(_display(), _CORE_KEYBOARD, ctypes.byref(told))
    down = [key for key in range(256) if bits[key // 8] >> key % 8 & 1]
    return down, told.mods, told.locked_mods


def buttons():
    """The buttons of the pointer that are down: one bit each."""
    told = _State()
    _xlib().XkbGetState(_display(), _CORE_KEYBOARD, ctypes.byref(told))
    return told.ptr_buttons


@contextlib.contextmanager
def layout(model, name):
    """Another keyboard, as a user sets it. Several layouts are separated by commas."""
    before = dict(line.split() for line in _ask("setxkbmap", "-query").splitlines())
    _ask("setxkbmap", "-model", model, "-layout", name)
    try:
        yield
    finally:
        _ask("setxkbmap", "-model", before["model:"], "-layout", before["layout:"])


def lock_group(number):
    """Switches to another layout of those that are set, counted from 0."""
    _xlib().XkbLockGroup(_display(), _CORE_KEYBOARD, number)
    _xlib().XSync(_display(), 0)


def borrowed_keys():
    """What a helper has noted of keys that it lends a meaning; empty when there is no note."""
    return _ask("xprop", "-root", "_TARQO_BORROWED_KEYS").partition("=")[2].strip()


def _press(keysym, is_down):
    symbol = ctypes.c_ulong(_xlib().XStringToKeysym(keysym.encode()))
    key = _xlib().XKeysymToKeycode(_display(), symbol)
    ctypes.CDLL("libXtst.so.6").XTestFakeKeyEvent(_display(), key, is_down, 0)
    _xlib().XSync(_display(), 0)


@contextlib.contextmanager
def held(keysym):
    """Keeps a key down as a user does."""
    _press(keysym, True)
    try:
        yield
    finally:
        _press(keysym, False)


def tap(keysym):
    with held(keysym):
        pass
