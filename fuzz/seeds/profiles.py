"""Seeds of camera profiles: the samples, and short ones."""
import pathlib

FILES = pathlib.Path(__file__).resolve().parent.parent.parent / "samples/profiles"


def profile(rest):  # pylint: disable=missing-function-docstring
    return b'{"name": "M", "cameras": [{"vid": "1234"}]' + rest + b"}"


MAP = b'{"file": "a.svd", "device": %s}'
I2C = b'"i2c", "slave": "0x6c", "mode": "16/16"'

PROFILES = {path.name.split(".")[0]: path.read_bytes() for path in sorted(FILES.glob("*.camera.json"))} | {
    "short": profile(b""),
    "chip-and-device": profile(b', "maps": [' + MAP % b'"chip"' + b", " + MAP % (I2C + b', "prefix": "L"') + b"]"),
    "same-names": profile(b', "maps": [' + MAP % b'"chip"' + b", " + MAP % I2C + b"]"),
    "order": profile(b', "maps": [' + MAP % (I2C + b', "byte-order": "low-first", "access-order": "downwards", '
                                             b'"step": 2, "base": "0xff00"') + b"]"),
    "latch": profile(b', "maps": [' + MAP % (b'"chip", "registers": {"CHIP.WIDE": {"before-write": '
                                             b'[{"address": 1, "value": 2}]}}') + b"]"),
    "settings": profile(b', "maps": [' + MAP % b'"chip"' + b'], "presets": [{"name": "a", "settings": '
                        b'["CTRL.MODE=off", "WIDE=1", "0x1=2", "X=1"]}, {"name": "b", "file": "l.txt"}]'),
    "regions": profile(b', "flash": {"size": "1M", "regions": [{"name": "a", "range": "0+4K", "files": ["*.bin"], '
                       b'"begins-with": "55aa"}], "image-region": "a"}'),
    "options": profile(b', "options": {"slave": 1, "mode": "9/9", "slvae": "x", "json": 1}'),
    "no-json": b'{"name": ', "twice": b'{"name": "a", "name": "b"}', "deep": b"[" * 40, "mark": b"\xef\xbb\xbf{}",
    "no-file": profile(b', "maps": [{"file": "none", "device": "chip"}]'),
}
