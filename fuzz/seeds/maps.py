"""Seeds of register maps: the suite's own, and short ones."""
import pathlib

FILES = pathlib.Path(__file__).resolve().parent.parent.parent / "tests/tool/maps"


def device(registers):  # pylint: disable=missing-function-docstring
    return (b"<device><name>D</name><peripherals><peripheral><name>P</name><baseAddress>0</baseAddress>"
            b"<registers>" + registers + b"</registers></peripheral></peripherals></device>")


REGISTER = b"<register><name>R</name><addressOffset>0</addressOffset>%s</register>"
CLUSTER = b"<cluster%s><name>%s</name><addressOffset>0</addressOffset>%s</cluster>"

MAPS = {path.stem: path.read_bytes() for path in sorted(FILES.glob("*.svd"))} | {
    "one-register": device(REGISTER % b""),
    "field": device(REGISTER % b"<fields><field><name>F</name><bitRange>[7:4]</bitRange></field></fields>"),
    "overlap": device(REGISTER % (b"<fields><field><name>F</name><lsb>0</lsb><msb>3</msb></field><field>"
                                  b"<name>G</name><bitOffset>2</bitOffset></field></fields>")),
    "array": device(REGISTER.replace(b"R<", b"R%%s<") % b"<dim>3</dim><dimIncrement>4</dimIncrement>"),
    "circle": device(CLUSTER % (b"", b"A", CLUSTER % (b' derivedFrom="A"', b"B", b""))),
    "doubling": device(CLUSTER % (b"", b"A", CLUSTER % (b' derivedFrom="C"', b"B", b"") + CLUSTER %
                                  (b' derivedFrom="C"', b"D", b"")) + CLUSTER % (b"", b"C", REGISTER % b"")),
    "large-array": device(REGISTER.replace(b"R<", b"R%%s<") % b"<dim>1000000</dim><dimIncrement>0</dimIncrement>"),
    "doctype": b"<!DOCTYPE d><device/>", "entity": b"<device>&a;</device>", "utf-16": b"\xff\xfe<\0",
    "mark": b"\xef\xbb\xbf" + device(b""), "deep": b"<a>" * 70, "no-end": b"<device><name>",
    "character-data": device(REGISTER % b"<description><![CDATA[a&b]]>c&#181;</description>"),
}
