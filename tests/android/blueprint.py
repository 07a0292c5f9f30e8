"""A small, tolerant reader for Android.bp (Blueprint) files.

It understands what module definitions use: comments, `name = value` and `name += value`
assignments, modules written `type { key: value, ... }`, strings (with Go escapes and raw
backquoted strings), integers, booleans, lists, maps, variable references and `+`
concatenation. Anything else (for example `select(...)`) is kept as an opaque Call value so a
check can still look at the rest of the file.
"""

import dataclasses
import re


class BlueprintError(Exception):
    def __init__(self, path, line, message):
        super().__init__(f"{path}:{line}: {message}")
        self.path = path
        self.line = line
        self.message = message


@dataclasses.dataclass
class Call:
    """A construct the reader does not evaluate, such as select(...)."""

    name: str
    text: str


@dataclasses.dataclass
class Module:
    type: str
    props: dict
    path: str
    line: int

    @property
    def name(self):
        return self.props.get("name")


_TOKEN = re.compile(
    r"""
    (?P<space>[ \t\r\n]+)
  | (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<string>"(?:[^"\\\n]|\\.)*")
  | (?P<raw>`[^`]*`)
  | (?P<int>-?[0-9]+)
  | (?P<ident>[A-Za-z_][A-Za-z0-9_.]*)
  | (?P<op>\+=|[{}\[\]():,=+])
    """,
    re.VERBOSE | re.DOTALL,
)

_ESCAPES = {"n": "\n", "t": "\t", "r": "\r", "\\": "\\", '"': '"', "'": "'", "a": "\a",
            "b": "\b", "f": "\f", "v": "\v"}


def _unquote(text):
    out = []
    i = 1
    while i < len(text) - 1:
        c = text[i]
        if c != "\\":
            out.append(c)
            i += 1
            continue
        nxt = text[i + 1]
        if nxt in _ESCAPES:
            out.append(_ESCAPES[nxt])
            i += 2
        elif nxt in "xuU":
            width = {"x": 2, "u": 4, "U": 8}[nxt]
            out.append(chr(int(text[i + 2:i + 2 + width], 16)))
            i += 2 + width
        elif nxt in "01234567":
            out.append(chr(int(text[i + 1:i + 4], 8)))
            i += 4
        else:
            out.append(nxt)
            i += 2
    return "".join(out)


def _tokenize(text, path):
    tokens = []
    pos = 0
    line = 1
    while pos < len(text):
        match = _TOKEN.match(text, pos)
        if not match:
            raise BlueprintError(path, line, f"unexpected character {text[pos]!r}")
        kind = match.lastgroup
        value = match.group()
        if kind not in ("space", "comment"):
            tokens.append((kind, value, line))
        line += value.count("\n")
        pos = match.end()
    tokens.append(("eof", "", line))
    return tokens


class _Parser:
    def __init__(self, text, path):
        self.path = path
        self.tokens = _tokenize(text, path)
        self.pos = 0
        self.variables = {}
        self.modules = []

    def peek(self, offset=0):
        return self.tokens[min(self.pos + offset, len(self.tokens) - 1)]

    def take(self):
        token = self.tokens[self.pos]
        self.pos += 1
        return token

    def error(self, message, token=None):
        token = token or self.peek()
        return BlueprintError(self.path, token[2], message)

    def expect(self, value):
        token = self.take()
        if token[1] != value or token[0] not in ("op",):
            raise self.error(f"expected {value!r}, found {token[1] or 'end of file'!r}", token)
        return token

    def parse_file(self):
        while self.peek()[0] != "eof":
            kind, name, line = self.take()
            if kind != "ident":
                raise self.error(f"expected a module or an assignment, found {name!r}")
            nxt = self.peek()[1]
            if nxt == "=":
                self.take()
                self.variables[name] = self.parse_expression()
            elif nxt == "+=":
                self.take()
                if name not in self.variables:
                    raise self.error(f"{name} += before {name} is defined")
                self.variables[name] = self._add(self.variables[name], self.parse_expression())
            elif nxt in ("{", "("):
                closing = "}" if nxt == "{" else ")"
                self.take()
                props = self.parse_properties(closing)
                self.modules.append(Module(name, props, self.path, line))
            else:
                raise self.error(f"unexpected {nxt!r} after {name}")
        return self.modules

    def parse_properties(self, closing):
        props = {}
        while self.peek()[1] != closing:
            kind, key, _ = self.take()
            if kind not in ("ident", "string"):
                raise self.error(f"expected a property name, found {key!r}")
            if kind == "string":
                key = _unquote(key)
            sep = self.take()
            if sep[1] not in (":", "="):
                raise self.error(f"expected ':' after {key}", sep)
            if key in props:
                raise self.error(f"property {key} given twice")
            props[key] = self.parse_expression()
            if self.peek()[1] == ",":
                self.take()
            elif self.peek()[1] != closing:
                raise self.error(f"expected ',' or {closing!r} after property {key}")
        self.take()
        return props

    def parse_expression(self):
        value = self.parse_operand()
        while self.peek()[1] == "+":
            self.take()
            value = self._add(value, self.parse_operand())
        return value

    def parse_operand(self):
        kind, text, _ = self.peek()
        if kind == "string":
            self.take()
            return _unquote(text)
        if kind == "raw":
            self.take()
            return text[1:-1]
        if kind == "int":
            self.take()
            return int(text)
        if text == "[":
            self.take()
            items = []
            while self.peek()[1] != "]":
                items.append(self.parse_expression())
                if self.peek()[1] == ",":
                    self.take()
                elif self.peek()[1] != "]":
                    raise self.error("expected ',' or ']' in a list")
            self.take()
            return items
        if text == "{":
            self.take()
            return self.parse_properties("}")
        if kind == "ident":
            self.take()
            if text in ("true", "false"):
                return text == "true"
            if self.peek()[1] == "(":
                return self._skip_call(text)
            if text not in self.variables:
                raise self.error(f"undefined variable {text}")
            return self.variables[text]
        raise self.error(f"expected a value, found {text or 'end of file'!r}")

    def _skip_call(self, name):
        start = self.pos
        depth = 0
        while True:
            kind, text, _ = self.take()
            if kind == "eof":
                raise self.error(f"unterminated {name}(...)")
            if text in ("(", "[", "{"):
                depth += 1
            elif text in (")", "]", "}"):
                depth -= 1
                if depth == 0:
                    break
        return Call(name, " ".join(t[1] for t in self.tokens[start:self.pos]))

    def _add(self, left, right):
        if isinstance(left, list) and isinstance(right, list):
            return left + right
        if isinstance(left, str) and isinstance(right, str):
            return left + right
        if isinstance(left, int) and isinstance(right, int) and not isinstance(left, bool):
            return left + right
        if isinstance(left, dict) and isinstance(right, dict):
            merged = dict(left)
            for key, value in right.items():
                merged[key] = self._add(merged[key], value) if key in merged else value
            return merged
        raise self.error(f"cannot add {type(left).__name__} and {type(right).__name__}")


def parse(text, path="Android.bp"):
    """Returns the modules of one Android.bp text; raises BlueprintError."""
    return _Parser(text, path).parse_file()


def parse_file(path):
    with open(path, encoding="utf-8") as handle:
        return parse(handle.read(), str(path))
