#!/usr/bin/env python3
"""Writes the committed seed corpus of the fuzz target into fuzz/corpus/.

Each seed is one call in the byte layout that decode_fuzz_case.cpp reads: every
method on a desktop and on a console host lacking nothing, the hard angles and
sizes, the kinds of broken host and the malformed host bitmap records the
fuzzer should start from. The fuzzer
mutates them; these are only starting points. Run it again after changing the
layout: python3 fuzz/write_seeds.py
"""
import hashlib
import pathlib
import struct

METHODS = ["Rotate", "RotateImageAndMask", "Rotate90", "Rotate180", "Rotate270", "RotateMemory",
           "Mirror", "VMirror", "HMirror", "MirrorInPlace", "VMirrorInPlace", "HMirrorInPlace",
           "Clone", "CloneToSize", "Bitmap"]
VERSIONS = [2019.0, 2010.028, 2010.029, 2011.03, 2011.04, 2011.99, 2012.0,
            2012.99, 2013.0, 2013.03, 2013.04, 2999.99, 3000.0]
KINDS = ["Desktop", "Console", "Web", "Undecided"]
ENTRY_POINTS = ["REALGetRBVersion", "RegisterPluginVersion", "PluginRegisterClassExtension",
                "PluginRegisterModule", "newPicture", "lockPictureDescription",
                "REALLockPictureDescription", "unlockPictureDescription", "REALPictureClearCache",
                "REALLockObject", "REALUnlockObject", "pluginPictureGraphicsGetter",
                "REALLoadObjectMethod", "REALGetPropValueInt", "REALGetPictureMask", "pluginObjectType"]
QUICKDRAW = ["SetGWorld", "GetPortPixMap", "GetPixDepth", "UnlockPixels",
             "LockPixels", "GetGWorldPixMap", "GetPixBaseAddr", "GetPixRowBytes"]
STORAGES = ["GWorld32", "GWorld24", "GWorld16", "HostBitmap", "VectorOnly"]
LONG_SIDES = [32766, 32767, 32768, 32769, 40000, 65536]
SIZE_LIMITS = [0, 1, -1, 32767, 32768, -2**31, 2**31 - 1]
NUDGES = [0.0, 1e-12, 1e-14, 1e-18, 1e-300, "denorm"]
HUGE = ["max", 1e300, 1e100, 1e18, 9007199254740992.0, 9007199254740993.0, 4503599627370495.5, 1e16, 1e12 + 0.5]
DEFECTS = ["FirstWordNotZero", "ValidityWordZero", "NoRowTable"]
FAILURE_BITS = {"desc4": 0x01, "desc8": 0x02, "desc10": 0x04, "noGraphics": 0x08, "noDrawPicture": 0x10,
                "noFrameworksFolder": 0x20, "noApplicationServices": 0x40, "executableFails": 0x80}


def byte(value):
    return bytes([value & 0xFF])


def u32(value):
    return struct.pack("<I", value & 0xFFFFFFFF)


def host(version=2019.0, kind="Desktop", faults=(), new_picture_fails=0, failures=(), missing_quickdraw=(),
         storage=None, padding=12, fill=0xFFFFFFFF):
    out = byte(len(VERSIONS) if version is None else VERSIONS.index(version))
    out += byte(KINDS.index(kind)) + byte(len(faults))
    for name, from_lookup in faults:  # from_lookup 0: missing; 2 to 4: answered from that look-up on
        out += byte(ENTRY_POINTS.index(name)) + byte(0 if from_lookup == 0 else from_lookup - 1)
    out += byte(new_picture_fails) + byte(sum(FAILURE_BITS[f] for f in failures))
    out += byte(sum(1 << QUICKDRAW.index(f) for f in missing_quickdraw))
    out += byte(0 if storage is None else STORAGES.index(storage) + 1) + byte(padding) + u32(fill)
    return out


def side(value):
    return byte(255 - len(LONG_SIDES) + 1 + LONG_SIDES.index(value) if value in LONG_SIDES else value)


def pixels(seed):
    return byte(0) + u32(seed)


def receiver(storage="GWorld32", width=7, height=5, seed=1, mask=None):
    """mask: None, ("same", storage) or ("other", storage, width, height)."""
    out = byte(len(STORAGES) if storage is None else STORAGES.index(storage)) + side(width) + side(height)
    if storage is not None:
        out += pixels(seed)
    if mask is None:
        return out + byte(0)
    kind = {"same": 1, "other": 2}[mask[0]]
    out += byte(STORAGES.index(mask[1]) * 3 + kind)
    if kind == 2:
        out += byte(mask[2]) + byte(mask[3])
    return out + pixels(seed + 1)


def near_quarter(nudge=0.0, sign=1, steps=0, down=False):
    return byte(sign * 127) + byte(NUDGES.index(nudge)) + byte(steps | (4 if down else 0))


def angle(value=0.0, kind="raw", quarter=0, nudge=0.0, sign=1, steps=0, down=False):
    """kind: raw, nan, inf, -inf, -0, subnormal, huge, quarter, eighth, sixtyfourths, degrees, exact."""
    kinds = ["raw", "nan", "inf", "-inf", "-0", "subnormal", "huge", "quarter", "eighth",
             "sixtyfourths", "degrees", "exact"]
    if kind == "huge":
        quarter = -1 if sign < 0 else 0  # the quarter byte's sign is the huge angle's
    out = byte(kinds.index(kind)) + byte(quarter)
    if kind == "raw":
        out += struct.pack("<d", value)
    elif kind == "subnormal":
        out += struct.pack("<Q", 1)
    elif kind == "huge":
        out += byte(HUGE.index(value))
    elif kind in ("quarter", "eighth"):
        out += near_quarter(nudge, sign, steps, down)
    elif kind == "sixtyfourths":
        out += struct.pack("<h", round(value * 64))
    elif kind == "degrees":
        out += struct.pack("<h", int(value))
    return out


def size_argument(value):
    if value in SIZE_LIMITS:
        return byte(SIZE_LIMITS.index(value))
    if value < 0:
        return byte(7) + struct.pack("<H", -value)
    return byte(8) + byte(value)


def call(method, turn=angle(30.0), background=0xFF336699, cut=0, width=9, height=4,
         receiver_defect=None, mask_defect=None):
    """The defects spoil a host bitmap's record: None or one of DEFECTS."""
    out = (byte(METHODS.index(method)) + turn + u32(background) + byte(cut) +
           size_argument(width) + size_argument(height))
    if receiver_defect is None and mask_defect is None:
        return out
    defects = 0 if receiver_defect is None else DEFECTS.index(receiver_defect) + 1
    defects |= (0 if mask_defect is None else DEFECTS.index(mask_defect) + 1) << 2
    return out + byte(defects)


def seeds():
    desktop, console = host(), host(kind="Console")
    for method in METHODS:
        yield desktop + receiver() + call(method)
        yield console + receiver("HostBitmap", 6, 9, seed=2) + call(method)
    # Every storage as a receiver, with a mask of its own size and of another.
    for storage in STORAGES:
        yield desktop + receiver(storage, 5, 4, mask=("same", "GWorld32")) + call("RotateImageAndMask")
        yield desktop + receiver(storage, 5, 4, mask=("other", storage, 3, 8)) + call("RotateImageAndMask", cut=1)
        yield desktop + receiver(storage, 4, 3) + call("VMirrorInPlace")
    # Hard angles.
    for turn in [angle(kind="nan"), angle(kind="inf"), angle(kind="-inf"), angle(kind="-0"),
                 angle(kind="subnormal"), angle(1e300, "huge"), angle("max", "huge", sign=-1),
                 angle(kind="quarter", quarter=1, nudge=1e-12), angle(kind="quarter", quarter=4, nudge=1e-300),
                 angle(kind="quarter", quarter=3, steps=1, down=True), angle(kind="eighth", quarter=0),
                 angle(kind="eighth", quarter=2, nudge=1e-14, sign=-1), angle(-1e-20), angle(330.0),
                 angle(kind="exact", quarter=-3)]:
        yield desktop + receiver(width=6, height=6) + call("Rotate", turn)
        yield console + receiver("HostBitmap", 5, 3) + call("RotateMemory", turn)
    # Sizes at and past the limits.
    for width in [0, 1, 32767, 32768]:
        yield desktop + receiver(width=width, height=1) + call("Rotate90")
        yield desktop + receiver(width=width, height=1) + call("Rotate", angle(kind="quarter", nudge=1e-12))
    for width, height in [(0, 5), (-1, 5), (32767, 1), (32768, 1), (-2**31, 2**31 - 1), (-300, 2)]:
        yield desktop + receiver() + call("CloneToSize", width=width, height=height)
    yield desktop + receiver(None) + call("Rotate")
    yield console + receiver(width=1, height=1) + call("MirrorInPlace")
    # Broken hosts.
    for faults in [[("newPicture", 0)], [("REALUnlockObject", 0)], [("REALLockObject", 3)],
                   [("pluginObjectType", 0)], [("PluginRegisterClassExtension", 2)],
                   [("REALGetPropValueInt", 0)], [("unlockPictureDescription", 0)]]:
        yield host(faults=faults) + receiver() + call("Rotate")
    yield host(version=None) + receiver() + call("Clone")
    yield host(version=2013.04) + receiver() + call("CloneToSize")
    yield host(version=2011.03, kind="Console", failures=["desc10"]) + receiver("HostBitmap") + call("Bitmap")
    yield host(new_picture_fails=2) + receiver() + call("Rotate", angle(60.0))
    yield host(failures=["noGraphics"]) + receiver("GWorld16") + call("Mirror")
    yield host(failures=["noDrawPicture"], kind="Undecided") + receiver("HostBitmap") + call("Clone")
    yield host(failures=["noApplicationServices"], kind="Web") + receiver("HostBitmap") + call("HMirror")
    yield host(missing_quickdraw=["GetPixRowBytes"]) + receiver() + call("VMirror")
    yield host(missing_quickdraw=["GetPixDepth", "SetGWorld"]) + receiver("GWorld24") + call("Bitmap")
    yield host(storage="GWorld24") + receiver() + call("Rotate", angle(100.0))
    yield host(storage="HostBitmap", padding=0) + receiver() + call("Rotate", angle(-75.5))
    # Malformed host bitmap records, on the receiver and on its mask.
    for defect in DEFECTS:
        for method in ["Rotate", "HMirrorInPlace", "Bitmap", "Clone"]:
            yield console + receiver("HostBitmap", 5, 4) + call(method, receiver_defect=defect)
        yield desktop + receiver("HostBitmap", 5, 4) + call("Mirror", receiver_defect=defect)
        yield console + receiver("HostBitmap", 5, 4, mask=("same", "HostBitmap")) + call(
            "RotateImageAndMask", mask_defect=defect)
        # A whole turn is a clone that the host draws, malformed record or not.
        yield console + receiver("HostBitmap", 5, 4, mask=("other", "HostBitmap", 3, 8)) + call(
            "RotateImageAndMask", angle(kind="exact", quarter=0), cut=1, mask_defect=defect)


def main():
    corpus = pathlib.Path(__file__).resolve().parent / "corpus"
    corpus.mkdir(exist_ok=True)
    for old in corpus.glob("seed-*"):
        old.unlink()
    for data in seeds():
        (corpus / f"seed-{hashlib.sha1(data).hexdigest()[:16]}").write_bytes(data)


if __name__ == "__main__":
    main()
