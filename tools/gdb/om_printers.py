"""Pretty-printers for GDB: what the classes of this library hold, told in its own words.

GDB loads them by itself for libom.so where it trusts the folder (see docs/debugging.md); elsewhere
`source tools/gdb/om_printers.py` does. They read memory only and call nothing in the program, so they work
on a core file too. What they cannot read, for want of debug symbols, they leave out.

One opens a debugger for memory that is broken: a list that runs in a circle, a record among its own children, a
size that is none. So every walk goes through `walked`, which counts the steps of all walks of one value together
and ends them at MOST_STEPS, and the output says where a walk stopped and why.
"""

import re

import gdb
import gdb.printing

KINDS = {
    'OmHeading': 'heading', 'OmProcedure': 'procedure', 'OmTextBlock': 'text', 'OmPageTitle': 'page title',
    'OmPivotTable': 'table', 'OmChart': 'chart', 'OmModel': 'model', 'OmInteractive': 'interactive',
    'OmDendrix': 'tree diagram',
}
DEEPEST = 100  # composites within composites; Python's own stack is short
NO_SUBSCRIPT = 2**64 - 1
DISSOLVING = 2**64 - 2


MOST_STEPS = 10000
STOPPED = '... (stopped after %d steps)' % MOST_STEPS
steps = 0  # of all walks of the value that is being printed; MOST_STEPS + 1 if one was stopped


def walked(iterable):
    """Yields what `iterable` does, until the walks of the value have made too many steps."""
    global steps
    for element in iterable:
        steps = min(steps, MOST_STEPS) + 1
        if steps > MOST_STEPS:
            return
        yield element


def limit():
    """Returns how many lines to show: GDB's own setting."""
    shown = gdb.parameter('print elements')
    return shown if shown else 2 * MOST_STEPS


def bounded(count):
    """Returns a number of characters as read, or less: an object that is not constructed yet may say anything."""
    return max(0, min(int(count), MOST_STEPS))


# --- Reading the standard library's containers and our own -----------------------------------------------

def string(value):
    return value['_M_dataplus']['_M_p'].string('utf-8', 'replace', bounded(value['_M_string_length']))


def std_vector(value):
    begin, end = value['_M_impl']['_M_start'], value['_M_impl']['_M_finish']
    return [(begin + i).dereference() for i in walked(range(int(end - begin)))]


def std_list(value, element):
    """Yields pointers to the elements: each stands behind the two links of its node. None if it runs in a circle."""
    head = value['_M_impl']['_M_node']
    end, node, seen = int(head.address), head['_M_next'], set()
    while int(node) != end:
        if int(node) in seen:
            yield None
            return
        seen.add(int(node))
        yield behind_links(node, element)
        node = node['_M_next']


def behind_links(node, element):
    return gdb.Value(int(node) + 2 * node.type.sizeof).cast(element.pointer())


def size(vector):
    return int(vector['last'] - vector['first']) if int(vector['first']) else 0


def elements(vector):
    return walked((vector['first'] + i).dereference() for i in range(size(vector)))


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


def plain_text(value, inside=()):
    """Returns the text of a cell text of any kind, as Text() would. `inside` has the addresses of the composites
    around it."""
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
        if int(value.address) in inside:
            return '... (inside itself)'
        inside = (*inside, int(value.address))
        parts = []
        for record, _ in records(value['tree']):
            if record is None:
                parts.append('... (inside itself)')
            elif len(inside) == DEEPEST:
                parts.append('... (too deep)')
            elif int(record['data']):
                parts.append(plain_text(whole(record['data']), inside))
        return ''.join(parts)
    return '?'


def quoted(pointer):
    """Returns the text behind a pointer to a cell text, in quotes, or "none"."""
    return '"%s"' % plain_text(whole(pointer)) if int(pointer) else 'none'


# --- Trees -----------------------------------------------------------------------------------------------

def records(root):
    """Yields every record of a tree with its depth, in pre-order; in the place of one that is below itself, None.
    Recursion would follow the user's depth."""
    way, above = [(iter([root]), 0)], set()
    while way:
        siblings, parent = way[-1]
        record = next(siblings, None)
        if record is None:
            way.pop()
            above.discard(parent)
        elif int(record.address) in above:
            yield None, len(way) - 1
        else:
            yield record, len(way) - 1
            way.append((elements(record['children']), int(record.address)))
            above.add(int(record.address))


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
        line = payload_line(record['data']) if record is not None else '... (below itself)'
        lines.append('  ' * min(depth, 50) + line)
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
    count, way = 0, [(data['root'], 1)]
    while way:
        vector, level = way.pop()
        for element in elements(vector):
            if int(element):
                if level == depth:
                    count += 1
                else:
                    way.append((element.cast(data['root'].type), level + 1))
    return '%d%s' % (count, '+' if steps > MOST_STEPS else '')


class Printer:
    """Shows a value by `show`. Its walks start to count with it."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        global steps
        steps = 0
        shown = self.show()
        return shown if steps <= MOST_STEPS else '%s%s%s' % (shown, '\n' if '\n' in shown else ' ', STOPPED)


class Sequence(Printer):
    def display_hint(self):
        return 'array'


class Vector(Sequence):
    def show(self):
        v = self.value
        if not int(v['region']):
            return 'a destroyed vector'
        room = int(v['limit'] - v['first']) if int(v['first']) else 0
        return '%d of %d%s' % (size(v), room, ', the first %d' % MOST_STEPS if size(v) > MOST_STEPS else '')

    def children(self):
        # GDB reads them after `show`, between other values.
        shown = range(min(size(self.value), MOST_STEPS))
        return ((str(i), (self.value['first'] + i).dereference()) for i in shown)


class Puppet(Sequence):
    def show(self):
        return 'else %s' % self.value['value']

    def children(self):
        return ((str(i), v) for i, v in enumerate(std_vector(self.value['values'])))


class Tree(Printer):
    def show(self):
        return '\n'.join(outline(self.value))


class Dimension(Printer):
    def show(self):
        head = 'dimension of %d categories' % int(self.value['numCategories'])
        return '\n'.join([head] + outline(self.value))


class TreeNode(Printer):
    def show(self):
        if not int(self.value['record']):
            return 'no node'
        record = self.value['record'].dereference()
        return 'level %d: %s, %d below' % (int(self.value['level']), payload_line(record['data']),
                                          size(record['children']))


class DimensionNode(Printer):
    def show(self):
        return node_line(self.value)


class Text(Printer):
    def show(self):
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
    def show(self):
        return quoted(self.value['text'])


class Footnote(Printer):
    def show(self):
        v = self.value
        marker = ', marker %s' % quoted(v['marker']) if int(v['marker']) else ''
        return 'footnote %s%s, uses %d' % (quoted(v['text']), marker, int(v['useCount']))


class Format(Printer):
    def show(self):
        v = self.value
        return 'type %d, width %d, decimals %d' % (int(v['type']), int(v['width']), int(v['decimals']))


class Item(Printer):
    def show(self):
        return item_line(self.value.address) if self.value.address is not None else None


class PivotTable(Printer):
    def show(self):
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
        lines.append('  region: %s' % Region(data['region']).show())
        if data['scratched']:
            lines.append('  scratched')
        return '\n'.join(lines)


class OutputTree(Printer):
    def show(self):
        lines = []
        element = self.value['list'].type.strip_typedefs().template_argument(0)
        for entry in walked(std_list(self.value['list'], element)):
            if len(lines) == limit():
                lines.append('...')
                break
            if entry is None:
                lines.append('... (the list runs in a circle)')
            else:
                lines.append('  ' * min(int(entry['level']), 50) + item_line(entry['data']))
        return '\n'.join(lines)


class OutlineNode(Printer):
    def show(self):
        v = self.value
        node = v['iter']['_M_node']
        if int(node) == int(v['tree']['list']['_M_impl']['_M_node'].address):
            return 'level %d: the end' % int(v['level'])
        element = v['tree']['list'].type.strip_typedefs().template_argument(0)
        data = behind_links(node, element)['data']
        what = item_line(data) if data.type.code == gdb.TYPE_CODE_PTR else str(data)
        return 'level %d: %s' % (int(v['level']), what)


class CellIterator(Printer):
    def show(self):
        try:
            data = self.value['cursor']['_M_ptr'].dereference()
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


# The free lists of a region that hold blocks of one size each: of 1, 2, 3, ... units of 16 bytes.
FINE_LISTS = 16


class Region(Printer):
    """What a region has in use: what was carved from chunks or allocated on its own, less the free lists."""

    def show(self):
        v = self.value
        count, size, note = int(v['used']['blocks']), int(v['used']['bytes']), ''
        for index in range(v['freeLists'].type.range()[1] + 1):
            block, seen = v['freeLists'][index], set()
            while int(block):
                if int(block) in seen or len(seen) == MOST_STEPS:
                    note = ' (free list %d stopped after %d blocks)' % (index, len(seen))
                    break
                seen.add(int(block))
                words = block.cast(gdb.lookup_type('unsigned long').pointer())
                units = index + 1 if index < FINE_LISTS else int(words[1])
                count -= 1
                size -= 16 * units
                block = block.cast(block.type.pointer()).dereference()
        size -= 8 * count + sum(int(v[rest]['end'] - v[rest]['bump']) // 16 * 16 for rest in ('fine', 'coarse'))
        # Pages that no block has reached yet do not count.
        held = int(v['bytesHeld']) - sum(int(v[rest]['end'] - v[rest]['bump']) for rest in ('fine', 'coarse')
                                         if v[rest]['zero'])
        return '%d bytes in %d blocks, %d bytes held%s' % (size, count, held, note)


class Exception_(Printer):
    def show(self):
        return string(self.value['text'])


class DimHeader(Printer):
    def show(self):
        subscripts = ', '.join(str(int(s)) for s in elements(self.value['leafSubscripts']))
        return 'header: subscripts {%s}, %d label levels' % (subscripts, int(self.value['maxVisibleLevels']))


class Heading(Printer):
    """The three headings of display, each by its private record."""

    def show(self):
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
