"""The single edits that a C++ source can take: what a slip of a programmer could have made of it."""
import re
from collections import namedtuple

Token = namedtuple("Token", "kind text begin end")
Edit = namedtuple("Edit", "kind begin end text")

TOKENS = re.compile(r"""
    (?P<skip>\s+|//[^\n]*|/\*.*?\*/|\#(?:[^\n\\]|\\.)*)
  | (?P<string>R"(?P<raw>\w*)\(.*?\)(?P=raw)"|(?:u8|[uUL])?"(?:\\.|[^"\\])*")
  | (?P<char>'(?:\\.|[^'\\])+')
  | (?P<number>(?:0[xX][0-9a-fA-F']+|\d[\d']*(?:\.\d+)?)[uUlLfF]*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<sign><<=|>>=|\.\.\.|::|->|\+\+|--|&&|\|\||[-+*/%&|^=!<>]=|<<|>>|.)
""", re.S | re.X)

# Only between blanks, where they are no part of a type.
SWAPS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "+": "-", "-": "+",
         "*": "/", "/": "*", "%": "*", "&&": "||", "||": "&&", "&": "|", "|": "& ~",
         "<<": ">>", ">>": "<<", "+=": "-=", "-=": "+=", "|=": "&=", "&=": "|="}
WORDS = {"true": "false", "false": "true", "break": "continue", "continue": "break"}
NO_EXPRESSION = set("""return if for while do switch case default break continue goto using typedef
    static const constexpr auto struct class enum union public private protected throw try catch
    else unsigned signed int bool char short long float double void thread_local namespace
    template friend operator static_assert extern inline virtual explicit mutable""".split())
ASSIGNMENTS = {"=", "+=", "-=", "*=", "/=", "%=", "|=", "&=", "^=", "<<=", ">>=", "++", "--"}
CLOSING = {"(": ")", "[": "]", "{": "}"}


def tokens_of(source):
    return [Token(m.lastgroup if m.lastgroup != "raw" else "string", m.group(), m.start(), m.end())
            for m in TOKENS.finditer(source) if m.lastgroup != "skip"]


def partners(tokens):
    """Where each bracket is closed, and each closing one opened."""
    partner, stack = {}, []
    for i, token in enumerate(tokens):
        if token.kind != "sign":
            continue
        if token.text in CLOSING:
            stack.append(i)
        elif token.text in CLOSING.values() and stack:
            partner[i] = stack.pop()
            partner[partner[i]] = i
    return partner


class Source:
    """The tokens of a source, and which of them are code that runs."""

    def __init__(self, text):
        self.text = text
        self.tokens = tokens_of(text)
        self.partner = partners(self.tokens)
        self.in_function = self._functions()
        self.left_out = self._left_out()

    def word(self, i):
        return self.tokens[i].text if 0 <= i < len(self.tokens) else ""

    def between_blanks(self, i):
        token = self.tokens[i]
        return self.text[token.begin - 1].isspace() and self.text[token.end].isspace()

    def _is_scope(self, i):
        """Whether a brace opens a class or a namespace, in which nothing runs."""
        j = i - 1
        while j >= 0 and self.word(j) not in (";", "{", "}"):
            j -= 1
        head = {token.text for token in self.tokens[j + 1:i]}
        if "enum" in head or self.word(i - 1) in ("=", ","):
            return True
        return ("(" not in head and "=" not in head) or self.word(i - 2) == "extern"

    def _functions(self):
        inside, stack = [], [False]
        for i, token in enumerate(self.tokens):
            if token.text == "{" and i in self.partner:
                stack.append(stack[-1] or not self._is_scope(i))
            inside.append(stack[-1])
            if token.text == "}" and len(stack) > 1:
                stack.pop()
        return inside

    def _left_out(self):
        """Assertions of the compiler, alignments and the sizes of arrays."""
        out = set()
        for i, token in enumerate(self.tokens):
            end = self.partner.get(i + 1)
            if token.text in ("static_assert", "alignas", "noexcept") and end:
                out.update(range(i, end + 1))
            end = self.partner.get(i)
            if token.text == "[" and end == i + 2 and self.word(end + 1) in (";", "{", "=") and \
                    self.tokens[i - 2].kind != "sign":
                out.update(range(i, end + 1))
        return out


def swaps(source):
    for i, token in enumerate(source.tokens):
        if token.text in SWAPS and token.kind == "sign" and source.between_blanks(i) and \
                source.word(i - 1) not in ("operator", "template", "<"):
            yield Edit("swapped", token.begin, token.end, SWAPS[token.text])
        elif token.text in WORDS and token.kind == "name":
            yield Edit("swapped", token.begin, token.end, WORDS[token.text])
        elif token.text in ("++", "--") and token.kind == "sign":
            yield Edit("swapped", token.begin, token.end, "--" if token.text == "++" else "++")
        elif token.text == "?" and source.between_blanks(i):
            yield Edit("forced", token.begin, token.end, "|| true ?")
            yield Edit("forced", token.begin, token.end, "&& false ?")


def constants(source):
    for i, token in enumerate(source.tokens):
        number = re.fullmatch(r"(0[xX])?([\d'a-fA-F]+?)([uUlL]*)", token.text)
        pure = source.word(i - 1) == "=" and source.word(i - 2) in (")", "const", "override")
        if token.kind != "number" or not number or pure or source.word(i - 1) == "<":
            continue
        prefix, digits, suffix = number.group(1) or "", number.group(2).replace("'", ""), number.group(3)
        value = int(digits, 16 if prefix else 8 if digits[0] == "0" and len(digits) > 1 else 10)
        yield Edit("off by one", token.begin, token.end, f"{value + 1}{suffix}")
        if value:
            yield Edit("off by one", token.begin, token.end, f"{value - 1}{suffix}")


def conditions(source):
    for i, token in enumerate(source.tokens):
        end = source.partner.get(i + 1)
        if token.text not in ("if", "while", "for") or not end:
            continue
        parts, depth = [i + 1], 0
        for j in range(i + 2, end):
            depth += {"(": 1, "{": 1, "[": 1, ")": -1, "}": -1, "]": -1}.get(source.word(j), 0)
            if source.word(j) == ";" and depth == 0:
                parts.append(j)
        if token.text == "for":
            if len(parts) != 3 or parts[2] == parts[1] + 1:
                continue
            begin, last = parts[1] + 1, parts[2]
        else:
            begin, last = parts[-1] + 1, end
        begin, last = source.tokens[begin].begin, source.tokens[last].begin
        yield Edit("negated", begin, last, f"!({source.text[begin:last]})")
        yield Edit("forced", begin, last, "false")
        if token.text == "if":
            yield Edit("forced", begin, last, "true")


def heads(source):
    """The parentheses behind for, if and while, in which no statement stands."""
    inside = set()
    for i, token in enumerate(source.tokens):
        if token.text in ("for", "if", "while", "switch") and i + 1 in source.partner:
            inside.update(range(i + 1, source.partner[i + 1] + 1))
    return inside


def begins_statement(source, i):
    before = source.word(i - 1)
    if before in (";", "{", "}", "else", "do"):
        return True
    if before == ":":
        return source.word(i - 2) == "default" or source.word(i - 3) == "case" or \
            source.word(i - 5) == "case"
    return before == ")" and source.word(source.partner.get(i - 1, 0) - 1) in ("if", "for", "while")


def is_declaration(words):
    """Whether a statement begins with a type and a name, or only names a variable."""
    text = " ".join(words)
    if re.match(r"static_cast < void > \( \w+ \) ;", text):
        return True
    if re.match(r"(:: )?\w+( :: \w+)* [=({;\[]", text):
        return False
    return re.match(r"(:: )?\w+( :: \w+)*( < .*? >)?( const)?( [*&]+| &&)* ?\b\w+\b ?[=({;\[]", text)


def end_of_statement(source, i):
    while i < len(source.tokens):
        word = source.word(i)
        if word == ";":
            return i
        if word in (")", "}", "]"):
            return None
        i = source.partner.get(i, i) + 1
    return None


def statements(source):
    inside = heads(source)
    for i, token in enumerate(source.tokens):
        if not source.in_function[i] or i in inside or token.text in "{}" or \
                not begins_statement(source, i):
            continue
        end = end_of_statement(source, i)
        if end is None:
            continue
        words = [t.text for t in source.tokens[i:end + 1]]
        if token.text == "return" and end > i + 1 and words[1] not in ("{", "0", "true", "false", "nullptr"):
            yield Edit("result removed", source.tokens[i + 1].begin, source.tokens[end].begin, "{}")
        elif token.text in ("break", "continue"):
            yield Edit("removed", token.begin, source.tokens[end].begin, "")
        elif token.text not in NO_EXPRESSION and not is_declaration(words) and \
                ("(" in words or ASSIGNMENTS & set(words)):
            yield Edit("removed", token.begin, source.tokens[end].begin, "")


def edits_of(text):
    """All edits of a source, in no order."""
    source = Source(text)
    left_out = [(source.tokens[i].begin, source.tokens[i].end) for i in source.left_out]
    for maker in (swaps, constants, conditions, statements):
        for edit in maker(source):
            if not any(begin < edit.end and edit.begin < end for begin, end in left_out):
                yield edit


def apply(text, edit):
    return text[:edit.begin] + edit.text + text[edit.end:]


def changed_lines(text, edit):
    """Number of the first line that an edit changes, and these lines before and after, each as one."""
    begin = text.rfind("\n", 0, edit.begin) + 1
    end = text.find("\n", edit.end)
    old = text[begin:end]
    new = text[begin:edit.begin] + edit.text + text[edit.end:end]
    return text.count("\n", 0, begin) + 1, " ".join(old.split()), " ".join(new.split())
