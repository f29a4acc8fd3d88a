#!/usr/bin/env python3
"""Converts a header of this library to a form that Doxygen reads as documented.

The headers are commented for readers of code: plain // comments, one for a run of declarations that
belong together, and none if a conventional name is clear by itself. Doxygen needs a comment of its own on
every declaration. This filter writes it line by line, so that line numbers stay the same:

- the first comment of a file describes the file; a comment right above a declaration describes that and
  the declarations that follow without a gap; one at the end of a line describes the line;
- a class or macro without a comment gets the comment of its file;
- what has no comment and follows a convention (accessor pairs, constructors, destructors, deleted
  functions) gets the sentence of that convention. For everything else Doxygen reports an error.
"""

import re
import sys

SCOPE = re.compile(r'(\b(?:class|struct|union|enum|namespace)\b|extern "C")(?![^{]*[)=][^{]*$)')
CONVENTIONS = [
    (r'= delete;', 'Deleted.'),
    (r'~\w+\(', 'Destroys the object with what it owns.'),
    (r'^using (\w+) = (.+);', r'Short for `\2`.'),
    (r'\boverride\b', None),
    (r'^friend\b', None),
    (r'\bvoid Visit\((?:const )?(\w+)&', r'Receives an `\1`.'),
    (r'^enum (?:class )?(\w+)', 'The kinds of {}.'),
    (r'operator==\(', 'Returns whether the two are equal.'),
    (r'operator<\(', 'Returns whether the first comes before the other.'),
    (r'operator!=\(', 'Returns whether the two differ.'),
    (r'operator=\(', 'Assigns the value of the other.'),
    (r'operator\*\(\)|operator->\(\)', 'Returns the object that this refers to.'),
    (r'operator--\(|operator\+\+\(', 'Moves by one.'),
    (r'operator\[\]\(', 'Returns the element at that position.'),
    (r'operator (new|delete)\(', 'Allocates memory from a region, or releases it.'),
    (r'\b(?:get|Get)(\w+)\(\)', 'Returns the {}.'),
    (r'\b(?:set|Set)(\w+)\([^,)]+\)', 'Sets the {}.'),
    (r'\b(?:add|set|Set)(\w+)\(const char\* \w+, unsigned int length\)', 'Appends a chunk to the {}.'),
    (r'^bool (\w+)\(\)', 'Returns the flag “{}”.'),
    (r'^void (\w+)\(bool ', 'Sets the flag “{}”.'),
    (r'^void (\w+)\([^,()]+\)', 'Sets the {}.'),
    (r'\b(\w+)\(\)( const)?( noexcept)?\s*(;|\{|= )', 'Returns the {}.'),
    (r'^[\w:<>*, ]+ \*?(\w+)( = [^()]+)?;$', 'The {}.'),
]


def escape(text):
    """Keeps Doxygen from reading commands, tags and links into plain text; code in backticks stays."""
    parts = re.split(r'(`[^`]*`)', text)
    return ''.join(p if p.startswith('`') else re.sub(r'([\\@<>#&%])', r'\\\1', p) for p in parts)


def comment_text(line):
    text = line.strip()[2:]
    if re.match(r' {3,}\S', text):  # an example
        return '    ' + text
    return escape(text)


def words(name):
    """Returns the words of a name: "MaxColumnWidth" is "max column width"."""
    parts = re.findall(r'[A-Z]?[a-z0-9]+|[A-Z0-9]+(?![a-z])', name)
    return ' '.join(part if part.isupper() else part.lower() for part in parts)


class Filter:
    def __init__(self, lines):
        self.lines = lines
        self.out = []
        self.scopes = []         # for each open brace: whether it contains declarations
        self.classes = []        # names of the open classes, in step with scopes
        self.enums = []          # which of them are enumerations
        self.statement = ''      # the part read so far of the current statement
        self.about = ''          # the comment of the file
        self.group = None        # the comment of the run of declarations

    def declaring(self):
        return all(self.scopes)

    def scan(self, code):
        """Follows braces and statements over a line without its comment."""
        code = re.sub(r'"(\\.|[^"\\])*"', lambda m: m.group() if 'C"' == m.group()[1:] else '""', code)
        code = re.sub(r"'(\\.|[^'\\])'", "' '", code)
        for c in code:
            if c == '{':
                found = SCOPE.search(self.statement)
                is_scope = bool(found) and '(' not in self.statement.replace('__attribute__((', '')
                self.scopes.append(is_scope and self.declaring())
                name = re.search(r'(\w+)( :[^:].*)?$', self.statement.strip()) if is_scope else None
                self.classes.append(name.group(1) if name else '')
                self.enums.append(is_scope and found.group(1) == 'enum')
                self.statement = ''
            elif c == '}':
                if self.scopes:
                    self.scopes.pop()
                    self.classes.pop()
                    self.enums.pop()
                self.statement = ''
            elif c == ';' and self.statement.count('(') <= self.statement.count(')'):
                self.statement = ''
            else:
                self.statement += c
                if re.search(r'\b(public|private|protected):$', self.statement):
                    self.statement = ''
        self.statement = (self.statement + ' ') if self.statement.strip() else ''

    def whole(self, i):
        """Returns the declaration that starts at line i, on one line."""
        text = ''
        for line in self.lines[i:i + 8]:
            text += ' ' + re.sub(r'\s*//.*', '', line.strip())
            if text.rstrip().endswith((';', '{', '}')):
                break
        return re.sub(r'\[\[\w+\]\]\s*', '', text).strip()

    def convention(self, declaration):
        if self.scopes and self.classes and self.classes[-1]:
            name = self.classes[-1]
            if re.match(r'(explicit |constexpr )*' + name + r'\(const ' + name + r'(<T>)?& other\)', declaration):
                return 'A copy.' if '= delete' not in declaration else 'Deleted.'
            if re.match(r'(explicit |constexpr )*' + name + r'\(', declaration) and '= delete' not in declaration:
                return 'Makes an object from what the arguments say.'
        for pattern, text in CONVENTIONS:
            match = re.search(pattern, declaration)
            if match:
                if text and '{}' in text:
                    return text.format(words(match.group(1)))
                return match.expand(text) if text else None
        return None

    def run(self):
        i, n = 0, len(self.lines)
        first = True
        while i < n:
            line = self.lines[i]
            stripped = line.strip()
            if stripped.startswith('//') and self.declaring() and not self.statement:
                j = i
                while j < n and self.lines[j].strip().startswith('//'):
                    j += 1
                follows = self.lines[j].strip() if j < n else ''
                texts = [comment_text(l) for l in self.lines[i:j]]
                if first:
                    self.out += ['///' + t for t in texts] + ['/// \\file']
                    self.about = ' '.join(t.strip() for t in texts)
                    j += 1
                    first = False
                elif follows.startswith('#if'):
                    # For the macros of all branches.
                    self.out += [''] * (j - i)
                    self.group = ' '.join(t.strip() for t in texts)
                elif follows and not follows.startswith(('#endif', '#else', '}')):
                    self.out += ['///' + t for t in texts]
                    self.group = ' '.join(t.strip() for t in texts)
                else:
                    self.out += [''] * (j - i)
                i = j
                continue
            if not stripped:
                self.group = None
                self.out.append('')
                i += 1
                continue
            if stripped.startswith('#'):
                if re.match(r'#define \w+_(API|PRIVATE)\b', stripped):
                    self.group = self.about
                if stripped.startswith('#define') and self.group and not self.out[-1].startswith('///'):
                    line = '/** ' + self.group + ' */ ' + line
                self.out.append(line)
                while self.lines[i].endswith('\\'):
                    i += 1
                    self.out.append(self.lines[i])
                i += 1
                continue
            if stripped.startswith('extern template'):
                self.out.append('')
                i += 1
                continue
            code, comment = line, ''
            match = re.match(r'^(.*?\S)\s*// (.*)$', line)
            if match and not line.strip().startswith('//'):
                code, comment = match.groups()
            starts = self.declaring() and not self.statement and re.match(r'[A-Za-z~\[:]', stripped)
            prefix = ''
            above = self.out and self.out[-1].startswith('///') and '\\file' not in self.out[-1]
            if starts and not above and not comment and not re.match(r'(public|private|protected):', stripped):
                declaration = self.whole(i)
                forward = re.match(r'(template <[^>]*> )?(class|struct|friend)\b[^{(]*;$', declaration)
                outside = re.search(r'\w(<\w+>)?::(~?\w+|operator\W+)\(', declaration) and not self.classes
                inside_enum = self.enums and self.enums[-1]
                is_class = re.match(r'(template <[^>]*> )?(class|struct)\b', declaration)
                special = re.search(r'= delete;|~\w+\(|operator=\(', declaration)
                text = None if special else self.group
                text = text or (self.about if is_class and not self.scopes else self.convention(declaration))
                if text and not forward and not outside and not inside_enum:
                    prefix = '/** ' + text.replace('*/', '') + ' */ '
            declaring, depth = self.declaring(), len(self.scopes)
            self.scan(code)
            if len(self.scopes) > depth or re.match(r'(public|private|protected):', stripped):
                self.group = None  # the comment of a class is not that of its members
            code = code.replace('[[nodiscard]] ', '')
            if comment and declaring:
                # Further lines of the comment at the end of this one.
                while i + 1 < n and re.match(r'\s{12,}// ', self.lines[i + 1]) and self.declaring():
                    comment += ' ' + self.lines[i + 1].strip()[3:]
                    self.out.append('')
                    i += 1
                code += '  ///< ' + escape(comment)
            self.out.append(prefix + code)
            i += 1
        return '\n'.join(self.out) + '\n'


if __name__ == '__main__':
    with open(sys.argv[1], encoding='utf-8') as source:
        sys.stdout.write(Filter(source.read().split('\n')).run())
