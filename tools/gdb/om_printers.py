"""Pretty-printers for GDB: what the classes of this library hold, told in its own words.

GDB loads them by itself for libom.so where it trusts the folder (see docs/debugging.md); elsewhere
`source tools/gdb/om_printers.py` does. They read memory only and call nothing in the program, so they work
on a core file too. What they cannot read, for want of debug symbols, they leave out.
"""

import re

import gdb
import gdb.printing

KINDS = {
    'OmHeading': 'heading', 'OmProcedure': 'procedure', 'OmTextBlock': 'text', 'OmPageTitle': 'page title',
    'OmPivotTable': 'table', 'OmChart': 'chart', 'OmModel': 'model', 'OmInteractive': 'interactive',
    'OmDendrix': 'tree diagram',
}
NO_SUBSCRIPT = 2**64 - 1
DISSOLVING = 2**64 - 2


def limit():
    """Returns how many lines or elements to show: GDB's own setting."""
    shown = gdb.parameter('print elements')
    return shown if shown else 10**9


def bounded(count):
    """Returns a count as read, or less: an object that is not constructed yet may say anything."""
    return min(int(count), 10000)


# --- Reading the standard library's containers and our own -----------------------------------------------

def string(value):
    return value['_M_dataplus']['_M_p'].string('utf-8', 'replace', bounded(value['_M_string_length']))


def std_vector(value):
    begin, end = value['_M_impl']['_M_start'], value['_M_impl']['_M_finish']
    return [(begin + i).dereference() for i in range(bounded(end - begin))]


def std_list(value, element):
    """Yields pointers to the elements: each stands behind the two links of its node."""
    head = value['_M_impl']['_M_node']
    end, node = int(head.address), head['_M_next']
    while int(node) != end:
        yield behind_links(node, element)
        node = node['_M_next']


def behind_links(node, element):
    return gdb.Value(int(node) + 2 * node.type.sizeof).cast(element.pointer())


def size(vector):
    return int(vector['last'] - vector['first']) if int(vector['first']) else 0


def elements(vector):
    for i in range(size(vector)):
        yield (vector['first'] + i).dereference()


def axis(puppet):
    return [int(v) for v in std_vector(puppet['values'])]


def whole(pointer):
    """Returns the object behind a pointer, as what it really is."""
    return pointer.cast(pointer.dynamic_type).dereference()


# --- Texts -----------------------------------------------------------------------------------------------

def fixed(value, form):
    return '.' if value != value else '%.*f' % (int(form['decimals']), value)


def chars(value, part=0):
    held = value['chars']
    first, total = int(held['firstSize']), int(held['size'])
    start, length = (0, first) if part == 0 else (first, total - first)
    return (held['chars'] + start).string('utf-8', 'replace', bounded(length)) if length else ''


def plain_text(value):
    """Returns the text of a cell text of any kind, as Text() would."""
    kind = value.type.strip_typedefs().name
    if kind in ('OmStringCell', 'OmStringCellUTF8'):
        return chars(value)
    if kind == 'OmNumber':
        return fixed(float(value['value']), value['format'])
    if kind == 'OmNumDataValue':
        return chars(value) or fixed(float(value['value']), value['format'])
    if kind in ('OmVariable', 'OmStringDataValue'):
        return chars(value, 1) or chars(value)
    if kind == 'OmComposite':
        return ''.join(plain_text(whole(record['data'])) for record, _ in records(value['tree'])
                       if int(record['data']))[:10000]
    return '?'


def quoted(pointer):
    """Returns the text behind a pointer to a cell text, in quotes, or "none"."""
    return '"%s"' % plain_text(whole(pointer)) if int(pointer) else 'none'


# --- Trees -----------------------------------------------------------------------------------------------

def records(root):
    """Yields every record of a tree with its depth, in pre-order. Recursion would follow the user's depth."""
    way = [iter([root])]
    while way:
        record = next(way[-1], None)
        if record is None:
            way.pop()
            continue
        yield record, len(way) - 1
        way.append(elements(record['children']))


def node_line(node):
    words = [quoted(node['text']['text'])]
    subscript = int(node['subscript'])
    if subscript == DISSOLVING:
        words.append('(dissolving)')
    elif node['group']:
        words.append('(group)')
    elif subscript != NO_SUBSCRIPT:
        words.append('[%d]' % subscript)
    words += [flag for flag, field in (('hidden', 'hide'), ('labels hidden', 'hideLabels')) if node[field]]
    return ' '.join(words)


def payload_line(data):
    kind = data.type.strip_typedefs()
    if kind.code == gdb.TYPE_CODE_PTR and kind.target().name == 'OmCellText':
        return quoted(data)
    return node_line(data) if kind.name == 'OmDimensionNode' else str(data)


def outline(root):
    lines = []
    for record, depth in records(root):
        if len(lines) == limit():
            lines.append('...')
            break
        lines.append('  ' * depth + payload_line(record['data']))
    return lines


# --- Items and tables ------------------------------------------------------------------------------------

def item_line(pointer):
    if not int(pointer):
        return 'none'
    kind = pointer.dynamic_type.target().name
    try:
        return '%s %s' % (KINDS.get(kind, kind), quoted(pointer['title']))
    except gdb.error:
        return 'item'  # the compiler describes such a class only inside the library


def dimension_names(data):
    return [quoted(d['data']['text']['text']) for d in elements(data['_dimensions'])]


def axis_line(indices, names):
    shown = [names[i] if 0 <= i < len(names) else 'none (%d)' % i for i in indices]
    return ', '.join(shown) or 'none'


def count_cells(data):
    """Returns the number of stored cells; a "+" says that there are more than were counted."""
    depth = size(data['_dimensions'])
    if not int(data['root']) or depth == 0:
        return '0'
    count, steps, way = 0, 0, [(data['root'], 1)]
    while way:
        vector, level = way.pop()
        for element in elements(vector):
            steps += 1
            if steps > 100000:
                return '%d+' % count
            if int(element):
                if level == depth:
                    count += 1
                else:
                    way.append((element.cast(data['root'].type), level + 1))
    return str(count)


class Printer:
    def __init__(self, value):
        self.value = value


class Sequence(Printer):
    def display_hint(self):
        return 'array'


class Vector(Sequence):
    def to_string(self):
        v = self.value
        if not int(v['region']):
            return 'a destroyed vector'
        room = int(v['limit'] - v['first']) if int(v['first']) else 0
        return '%d of %d' % (size(v), room)

    def children(self):
        return ((str(i), e) for i, e in enumerate(elements(self.value)))


class Puppet(Sequence):
    def to_string(self):
        return 'else %s' % self.value['value']

    def children(self):
        return ((str(i), v) for i, v in enumerate(std_vector(self.value['values'])))


class Tree(Printer):
    def to_string(self):
        return '\n'.join(outline(self.value))


class Dimension(Printer):
    def to_string(self):
        head = 'dimension of %d categories' % int(self.value['numCategories'])
        return '\n'.join([head] + outline(self.value))


class TreeNode(Printer):
    def to_string(self):
        if not int(self.value['record']):
            return 'no node'
        record = self.value['record'].dereference()
        return 'level %d: %s, %d below' % (int(self.value['level']), payload_line(record['data']),
                                          size(record['children']))


class DimensionNode(Printer):
    def to_string(self):
        return node_line(self.value)


class Text(Printer):
    def to_string(self):
        value = self.value
        if value.address is not None:
            value = whole(value.address)
        words = ['%s "%s"' % (value.type.strip_typedefs().name, plain_text(value))]
        kind = value.type.name
        if kind == 'OmVariable':
            words.append('name "%s"' % chars(value))
        elif kind == 'OmStringDataValue':
            words.append('value "%s"' % chars(value))
        elif kind == 'OmNumDataValue':
            words.append('value %s' % fixed(float(value['value']), value['format']))
        elif kind == 'OmStringCell' and value['flag']:
            words.append('flagged')
        elif kind == 'OmComposite':
            return '\n'.join([words[0]] + ['  ' + line for line in outline(value['tree'])])
        return ', '.join(words)


class TextPtr(Printer):
    def to_string(self):
        return quoted(self.value['text'])


class Footnote(Printer):
    def to_string(self):
        v = self.value
        marker = ', marker %s' % quoted(v['marker']) if int(v['marker']) else ''
        return 'footnote %s%s, uses %d' % (quoted(v['text']), marker, int(v['useCount']))


class Format(Printer):
    def to_string(self):
        v = self.value
        return 'type %d, width %d, decimals %d' % (int(v['type']), int(v['width']), int(v['decimals']))


class Item(Printer):
    def to_string(self):
        return item_line(self.value.address) if self.value.address is not None else None


class PivotTable(Printer):
    def to_string(self):
        lines = [item_line(self.value.address)]
        try:
            data = self.value['_my'].dereference()
            names = dimension_names(data)
        except (gdb.error, RuntimeError):
            return lines[0]  # nothing more without the library's debug symbols
        dims = ['%d %s of %d' % (i, names[i], int(d['numCategories']))
                for i, d in enumerate(elements(data['_dimensions']))]
        lines.append('  dimensions: %s' % (', '.join(dims) or 'none'))
        lines += ['  %s: %s' % (which, axis_line(axis(data[which]), names)) for which in ('rows', 'columns', 'layers')]
        lines.append('  cells: %s, footnotes: %d' % (count_cells(data), size(data['footnotes'])))
        lines.append('  region: %s' % Region(data['region']).to_string())
        if data['scratched']:
            lines.append('  scratched')
        return '\n'.join(lines)


class OutputTree(Printer):
    def to_string(self):
        lines = []
        element = self.value['list'].type.strip_typedefs().template_argument(0)
        for entry in std_list(self.value['list'], element):
            if len(lines) == limit():
                lines.append('...')
                break
            lines.append('  ' * int(entry['level']) + item_line(entry['data']))
        return '\n'.join(lines)


class OutlineNode(Printer):
    def to_string(self):
        v = self.value
        node = v['iter']['_M_node']
        if int(node) == int(v['tree']['list']['_M_impl']['_M_node'].address):
            return 'level %d: the end' % int(v['level'])
        element = v['tree']['list'].type.strip_typedefs().template_argument(0)
        data = behind_links(node, element)['data']
        what = item_line(data) if data.type.code == gdb.TYPE_CODE_PTR else str(data)
        return 'level %d: %s' % (int(v['level']), what)


class CellIterator(Printer):
    def to_string(self):
        try:
            data = self.value['cursor'].dereference()
            cell = data['cell']
            if not int(cell):
                return 'cells: the end'
            levels = list(std_vector(data['levels']))
            indices = [int(level['index']) for level in levels]
            # A step within the bottom vector moves this alone.
            indices[0] = int(data['next'] - levels[0]['vector'].dereference()['first']) - 1
            return 'cell {%s}: %s' % (', '.join(map(str, indices)), quoted(cell))
        except (gdb.error, RuntimeError):
            return 'cells'


# Bytes from one block of a region's size class to the next.
STRIDES = [16 * (c + 1) for c in range(17)] + [((5 + c % 4) << (6 + c // 4)) + 16 for c in range(24)]


class Region(Printer):
    def to_string(self):
        v = self.value
        count = int(v['given']['blocks']) + int(v['carved'])
        # Addresses cancel out in numbers of 64 bits.
        size = (int(v['given']['bytes']) + int(v['settled']) + int(v['fine']['bump']) +
                int(v['coarse']['bump']) - 8 * int(v['carved'])) % 2**64
        lists = v['freeLists']
        for c in range(lists.type.range()[1] + 1):
            block = lists[c]
            while int(block):
                count -= 1
                size -= STRIDES[c] - 8
                block = block.cast(block.type.pointer()).dereference()
        return '%d bytes in %d blocks, %d bytes held' % (size, count, int(v['bytesHeld']))


class Exception_(Printer):
    def to_string(self):
        return string(self.value['text'])


class DimHeader(Printer):
    def to_string(self):
        subscripts = ', '.join(str(int(s)) for s in elements(self.value['leafSubscripts']))
        return 'header: subscripts {%s}, %d label levels' % (subscripts, int(self.value['maxVisibleLevels']))


class Heading(Printer):
    """The three headings of display, each by its private record."""

    def to_string(self):
        try:
            data = self.value['data'].dereference()
            names = dimension_names(data['table']['_my'].dereference())
            return self.describe(data, names) + (', empty ones left out' if data['skipEmpty'] else '')
        except (gdb.error, RuntimeError):
            return 'display heading'


class LayerHeading(Heading):
    def describe(self, data, names):
        current = int(data['currentLayer'])
        return 'layers of %s: %d, current %s' % (axis_line(axis(data['layerDims']), names), int(data['layerCount']),
                                                current if current >= 0 else 'none')


class AxisHeading(Heading):
    def describe(self, data, names):
        what, labels = (('rows', 'columns') if self.value.type.strip_typedefs().name == 'OmDisplayRowHeading'
                        else ('columns', 'rows'))
        return '%s of %s: %d, %s of labels: %d' % (what, axis_line(axis(data['axisDims']), names),
                                                  int(data['placeCount']), labels, int(data['headingWidth']))


PRINTERS = [
    (r'OmVector(Base)?<.*>|OmPointerVector', Vector),
    (r'PuppetVector<.*>', Puppet),
    (r'OmVectorTree(Data)?<[^>]*>', Tree),
    (r'OmVectorTree<.*>::Handle<.*>', TreeNode),
    (r'OmDimension', Dimension),
    (r'OmDimensionNode', DimensionNode),
    (r'OmCellText|Om(StringCell|StringCellUTF8|Number|Variable|NumDataValue|StringDataValue|Composite)', Text),
    (r'OmCellTextPtr', TextPtr),
    (r'OmFootnote', Footnote),
    (r'Qualtex_Format', Format),
    (r'OmPivotTable', PivotTable),
    (r'OmOutputPart|' + '|'.join(k for k in KINDS if k != 'OmPivotTable'), Item),
    (r'OmOutputTree', OutputTree),
    (r'ListTree<.*>::Node', OutlineNode),
    (r'OmPivotTable::(Const)?Iterator', CellIterator),
    (r'OmMemoryRegion', Region),
    (r'OMSException', Exception_),
    (r'OmDimHeader', DimHeader),
    (r'OmDisplayLayerHeading', LayerHeading),
    (r'OmDisplay(Row|Column)Heading', AxisHeading),
]


def register(objfile):
    printers = gdb.printing.RegexpCollectionPrettyPrinter('om')
    for pattern, printer in PRINTERS:
        printers.add_printer(printer.__name__.rstrip('_'), '^(%s)$' % pattern, printer)
    gdb.printing.register_pretty_printer(objfile, printers, replace=True)


register(gdb.current_objfile())
