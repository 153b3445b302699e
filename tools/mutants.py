"""Finds the small changes ("mutants") of C++ sources that tools/mutate.py tries. It reads tokens rather than C++:
mutants that do not compile do not count. It relies on clang-format's spacing."""

import re
from dataclasses import dataclass

TOKEN = re.compile(r"""
    (?P<space>\s+|//[^\n]*|/\*.*?\*/|(?<![^\n])[ \t]*\#(?:[^\n\\]|\\.|\\\n)*)
  | (?P<string>"(?:\\.|[^"\\])*")
  | (?P<char>'(?:\\.|[^'\\])')
  | (?P<number>\d[\w.]*)
  | (?P<word>[A-Za-z_]\w*)
  | (?P<op><<=|>>=|->|::|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|.)
""", re.VERBOSE | re.DOTALL)

BINARY = {"<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"], "==": ["!="], "!=": ["=="],
          "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"], "<<": [">>"], ">>": ["<<"], "&": ["|"],
          "|": ["&"], "^": ["&"], "+=": ["-="], "-=": ["+="], "|=": ["&="], "&=": ["|="], "&&": ["||"], "||": ["&&"]}
COMPARISONS = {"<", "<=", ">", ">=", "==", "!="}
OPENING = {"(": ")", "[": "]", "{": "}"}
DECLARATION = re.compile(r"(?:const|static|constexpr|auto|unsigned|int|bool|char|short|using|namespace)\b"
                         r"|(?!delete\b|throw\b|return\b|new\b)[\w:]+(?:<.*>)?[\s*&]+\w+\s*(?:[=({;\[])", re.DOTALL)


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    end: int


@dataclass(frozen=True)
class Mutant:
    """A replacement for the bytes [start, end) of the file. `code` is the line that contains it, `change` describes it;
    together with the file name they identify it in tools/mutate-equivalent.txt."""
    file: str
    line: int
    code: str
    change: str
    start: int
    end: int
    replacement: str

    def applied(self, text):
        return text[:self.start] + self.replacement + text[self.end:]

    def __str__(self):
        return "%s:%d: %s: %s" % (self.file, self.line, self.code, self.change)


class Source:
    def __init__(self, file, text):
        self.file = file
        self.text = text
        self.tokens = [Token(match.lastgroup, match.group(), match.start(), match.end())
                       for match in TOKEN.finditer(text) if match.lastgroup != "space"]
        self.found = []
        self.partner = self.match_brackets()

    def match_brackets(self):
        partner, open_ones = {}, []
        for i, token in enumerate(self.tokens):
            if token.text in OPENING and token.kind == "op":
                open_ones.append(i)
            elif token.text in OPENING.values() and token.kind == "op":
                partner[open_ones.pop()] = i
        return partner

    def add(self, start, end, replacement, change):
        line = self.text.count("\n", 0, start) + 1
        code = self.text[self.text.rfind("\n", 0, start) + 1:].split("\n", 1)[0].strip()
        same = sum(1 for mutant in self.found if mutant.line == line and mutant.change.split(" (#")[0] == change)
        if same:
            change += " (#%d)" % (same + 1)
        self.found.append(Mutant(self.file, line, code, change, start, end, replacement))

    def replace(self, token, replacement):
        self.add(token.start, token.end, replacement, "%s -> %s" % (token.text, replacement or "nothing"))

    def before(self, token):
        return self.text[token.start - 1:token.start]

    def stands_apart(self, token):
        return self.before(token).isspace() and self.text[token.end:token.end + 1].isspace()

    # -- literals and operators ---------------------------------------------------------------------------------

    def mutate_tokens(self):
        skipped_to = -1
        for i, token in enumerate(self.tokens):
            if token.text == "static_assert":
                skipped_to = self.partner[i + 1]
            if i > skipped_to:
                self.mutate_token(i, token)

    def mutate_token(self, i, token):
        if token.kind == "number":
            self.mutate_number(token)
        elif token.kind == "string":
            self.replace(token, token.text[:-1] + '~"')
        elif token.kind == "char":
            self.replace(token, "'~'")
        elif token.text in ("true", "false"):
            self.replace(token, "false" if token.text == "true" else "true")
        elif token.kind == "op":
            self.mutate_operator(i, token)

    def mutate_number(self, token):
        digits = re.match(r"0[xX][0-9a-fA-F]+|\d+", token.text).group()
        number, suffix = int(digits, 0 if digits[:2] in ("0x", "0X") else 10), token.text[len(digits):]
        for other in dict.fromkeys((number + 1, number - 1, 0)):
            if other != number:
                self.replace(token, str(other) + suffix)

    def mutate_operator(self, i, token):
        if token.text in ("++", "--"):
            self.replace(token, "--" if token.text == "++" else "++")
        elif token.text == "!":
            self.replace(token, "")
        elif token.text == "-" and not self.text[token.end].isspace():
            self.replace(token, "")
        elif token.text in BINARY and self.stands_apart(token) and not self.joins_texts(i):
            for other in BINARY[token.text]:
                self.replace(token, other)

    def joins_texts(self, i):
        """`+` next to a string has no counterpart; "template <" is not a comparison."""
        beside = self.tokens[i - 1], self.tokens[i + 1]
        return any(token.kind == "string" for token in beside) or beside[0].text == "template"

    # -- conditions ---------------------------------------------------------------------------------------------

    def mutate_conditions(self):
        for i, token in enumerate(self.tokens):
            if token.text in ("if", "while") and self.tokens[i + 1].text == "(":
                first, last = self.condition(i + 1)
                self.negate(first, last)
            elif token.text == "for":
                clauses = self.split(i + 2, self.partner[i + 1], ";")
                if len(clauses) == 3:
                    self.negate(*clauses[1])
            elif token.text == "?":
                self.negate(self.start_of_expression(i), i)

    def condition(self, opening):
        """The condition without an initialisation that precedes it."""
        return self.split(opening + 1, self.partner[opening], ";")[-1]

    def split(self, first, end, separator):
        parts, i, start = [], first, first
        while i < end:
            if self.tokens[i].text == separator:
                parts.append((start, i))
                start = i + 1
            i = self.partner.get(i, i) + 1
        return parts + [(start, end)]

    def start_of_expression(self, i):
        closing = {close: opening for opening, close in self.partner.items()}
        while True:
            before = self.tokens[i - 1].text
            if i - 1 in closing:
                i = closing[i - 1]
            elif before in ("(", "{", "[", ",", "=", "return", ";", "?", ":", "+=", "}"):
                return i
            else:
                i -= 1

    def negate(self, first, end):
        """Skips conditions for which changing the only operator has the same effect."""
        inside = [token.text for token in self.tokens[first:end]]
        operators = [text for token, text in zip(self.tokens[first:end], inside)
                     if text in ("&&", "||") or (text in COMPARISONS and self.stands_apart(token))]
        if not inside or (len(operators) == 1 and operators[0] in COMPARISONS) or (inside[0] == "!" and not operators):
            return
        start, stop = self.tokens[first].start, self.tokens[end - 1].end
        self.add(start, stop, "!(%s)" % self.text[start:stop], "negated: %s" % " ".join(self.text[start:stop].split()))

    # -- statements ---------------------------------------------------------------------------------------------

    def mutate_statements(self):
        for i, token in enumerate(self.tokens):
            if token.text == "{" and self.opens_block(i):
                statements = self.statements_of(i)
                for first, last in statements:
                    self.remove(first, last)
                for one, other in zip(statements, statements[1:]):
                    self.swap(one, other)

    def opens_block(self, i):
        while self.tokens[i - 1].text in ("const", "override", "noexcept"):
            i -= 1
        return self.tokens[i - 1].text in (")", "else", "try")

    def statements_of(self, opening):
        statements, i = [], opening + 1
        while i < self.partner[opening]:
            end = self.end_of_statement(i)
            statements.append((i, end))
            i = end + 1
        return statements

    def end_of_statement(self, i):
        """The index of the last token of the statement."""
        word = self.tokens[i].text
        if word == "{":
            return self.partner[i]
        if word in ("if", "for", "while"):
            end = self.end_of_statement(self.partner[i + 1] + 1)
            return self.end_of_statement(end + 2) if self.tokens[end + 1].text == "else" else end
        if word == "try":
            end = self.partner[i + 1]
            while self.tokens[end + 1].text == "catch":
                end = self.partner[self.partner[end + 2] + 1]
            return end
        while self.tokens[i].text != ";":
            i = self.partner.get(i, i) + 1
        return i

    def statement_text(self, first, last):
        return self.text[self.tokens[first].start:self.tokens[last].end]

    def remove(self, first, last):
        for start in self.simple_statements(first, last):
            end = self.end_of_statement(start)
            text = self.statement_text(start, end)
            if text == ";" or DECLARATION.match(text) or re.match(r"return\b(?!;)|namespace\b|using\b", text):
                continue
            self.add(self.tokens[start].start, self.tokens[end].end, ";", "removed")

    def simple_statements(self, first, last):
        """The statement itself, or the unbraced statement that it controls; a braced one is handled as a block."""
        word = self.tokens[first].text
        if word in ("if", "for", "while"):
            inner = self.partner[first + 1] + 1
            end = self.end_of_statement(inner)
            starts = self.simple_statements(inner, end)
            return starts + self.simple_statements(end + 2, last) if end < last else starts
        return [] if word in ("{", "try") else [first]

    def swap(self, one, other):
        texts = [self.statement_text(*one), self.statement_text(*other)]
        words = [set(re.findall(r"[A-Za-z_]\w*", re.sub(r'"(?:\\.|[^"\\])*"', "", text))) for text in texts]
        declared = re.search(r"(\w+)\s*(?:[=({;\[:])", texts[0]) if DECLARATION.match(texts[0]) else None
        if any(re.match(r"(?:return|break|continue|using|namespace|throw)\b", text) for text in texts):
            return
        if declared and declared.group(1) in words[1]:
            return
        if not words[0] & words[1] and any("(" not in text for text in texts):
            return  # unrelated statements
        start, end = self.tokens[one[0]].start, self.tokens[other[1]].end
        between = self.text[self.tokens[one[1]].end:self.tokens[other[0]].start]
        self.add(start, end, texts[1] + between + texts[0],
                 "swapped with: %s" % " ".join(texts[1].split())[:60].strip())


def find_mutants(file, text):
    source = Source(file, text)
    source.mutate_tokens()
    source.mutate_conditions()
    source.mutate_statements()
    return sorted(source.found, key=lambda mutant: (mutant.start, mutant.end, mutant.change))
