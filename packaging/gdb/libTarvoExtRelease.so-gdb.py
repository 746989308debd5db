"""Shows the objects of tarvo-ext in GDB as what they mean.

GDB loads this by itself beside the installed library; `source` loads it from anywhere. What the
objects consist of is in the debug information of the library.
"""
import gdb
import gdb.printing

TICKS_PER_SECOND = 100000000
TICKS_PER_DAY = 86400 * TICKS_PER_SECOND
LONGEST_TEXT = 200
NO_HANDLE = -1


def length_of(string):
    return int(string['_M_string_length'])


def text_of(string, begin=0):
    """The first bytes of a std::string, each as the character of that number."""
    pointer = string['_M_dataplus']['_M_p'] + begin
    return pointer.string('latin-1', length=min(length_of(string) - begin, LONGEST_TEXT))


def quoted(text):
    return '"' + text.encode('unicode_escape').decode('ascii').replace('"', '\\"') + '"'


def count_of(vector):
    return int(vector['_M_impl']['_M_finish'] - vector['_M_impl']['_M_start'])


def elements_of(vector):
    first = vector['_M_impl']['_M_start']
    return (first[n] for n in range(count_of(vector)))


def counted(number, noun):
    return '%d %s%s' % (number, noun, '' if number == 1 else 's')


def target_of(pointer):
    """What a std::shared_ptr or std::unique_ptr, which begin with their pointer, points at."""
    plain = pointer.type.strip_typedefs().template_argument(0).pointer()
    target = pointer.address.reinterpret_cast(plain.pointer()).dereference()
    return target.dereference() if int(target) else None


def fraction(ticks):
    digits = ('%08d' % (ticks % TICKS_PER_SECOND)).rstrip('0')
    return '.' + digits if digits else ''


def clock(ticks):
    seconds = ticks // TICKS_PER_SECOND
    parts = (seconds // 3600, seconds // 60 % 60, seconds % 60)
    return '%02d:%02d:%02d' % parts + fraction(ticks)


def date(day):
    """Year, month and day of a day counted from the first of January of year 0."""
    era, of_era = divmod(day - 60, 146097)  # eras begin with a March
    year = (of_era - of_era // 1460 + of_era // 36524 - of_era // 146096) // 365
    of_year = of_era - (365 * year + year // 4 - year // 100)
    month = (5 * of_year + 2) // 153
    day_of_month = of_year - (153 * month + 2) // 5 + 1
    month = month + 3 if month < 10 else month - 9
    return era * 400 + year + (month <= 2), month, day_of_month


def instant(ticks, offset_minutes):
    day, of_day = divmod(ticks + offset_minutes * 60 * TICKS_PER_SECOND, TICKS_PER_DAY)
    return '%04d-%02d-%02dT' % date(day) + clock(of_day)


def offset(minutes):
    return '%s%02d:%02d' % ('-' if minutes < 0 else '+', *divmod(abs(minutes), 60))


class Printer:
    def __init__(self, value):
        self.value = value


class TimeDiff(Printer):
    def to_string(self):
        ticks = int(self.value['m_nValue'])
        days, of_day = divmod(abs(ticks), TICKS_PER_DAY)
        return ('-' if ticks < 0 else '') + ('%d d ' % days if days else '') + clock(of_day)


class UTCTime(Printer):
    def to_string(self, offset_minutes=0, zone='Z'):
        ticks = int(self.value['m_oTime']['m_nValue']) % 2**64
        invalid = '' if self.value['m_bValid'] else ' (invalid)'
        return instant(ticks, offset_minutes) + zone + invalid


class LocalTime(UTCTime):
    def to_string(self):
        minutes = 60 * int(self.value['m_nTimeZone'])
        return super().to_string(minutes, offset(minutes))


class ZoneTime(Printer):
    def to_string(self):
        minutes = int(self.value['m_nOffsetMinutes'])
        return instant(int(self.value['m_nTicks']), minutes) + offset(minutes)


class TimeZone(Printer):
    def to_string(self):
        data = target_of(self.value['m_pData'])
        if data is None:
            return 'UTC'
        return 'time zone, ' + counted(count_of(data['m_vecChanges']), 'change')


class Timeout(Printer):
    FOREVER = 0xFFFFFFFF

    def to_string(self):
        length = int(self.value['m_nMilliseconds'])
        if length == self.FOREVER:
            return 'never'
        return '%d ms from %s' % (length, Stopwatch(self.value).to_string())


class Stopwatch(Printer):
    def to_string(self):
        nanoseconds = int(self.value['m_oBegin']['__d']['__r'])
        return '%d.%09d s on the monotonic clock' % divmod(nanoseconds, 10**9)


class IniLine(Printer):
    def to_string(self):
        section, option, value, comment = (
            text_of(self.value[name])
            for name in ('m_strSection', 'm_strOption', 'm_strValue', 'm_strComment'))
        meaning = ''
        if self.value['m_bSection']:
            meaning = '[%s]' % section
        elif option:
            meaning = '%s=%s' % (option, value)
        return ' '.join(part for part in (meaning, comment.strip()) if part)


class IniDocument(Printer):
    def to_string(self):
        return 'INI document, ' + counted(count_of(self.value['m_apOptionLines']), 'line')

    def children(self):
        lines = elements_of(self.value['m_apOptionLines'])
        return (('[%d]' % n, line.dereference()) for n, line in enumerate(lines))

    def display_hint(self):
        return 'array'


class IniFile(Printer):
    def to_string(self):
        case = ', case-sensitive' if self.value['m_bCaseSensitiv'] else ''
        return 'INI file ' + quoted(text_of(self.value['m_strIniFileName'])) + case


class SafeIniFile(IniFile):
    def to_string(self):
        findings = count_of(self.value['m_vecFindings'])
        error = int(self.value['m_nLastError'])
        return (super().to_string() + ', ' + counted(findings, 'finding')
                + (', errno %d' % error if error else ''))

    def children(self):
        findings = elements_of(self.value['m_vecFindings'])
        return (('[%d]' % n, finding) for n, finding in enumerate(findings))

    def display_hint(self):
        return 'array'


class IniFinding(Printer):
    def to_string(self):
        line = int(self.value['m_nLine'])
        return ('line %d: ' % line if line else '') + text_of(self.value['m_strText'])


class MutexBuffer(Printer):
    def to_string(self):
        buffer = self.value['m_sBuffer']
        return counted(length_of(buffer), 'character') + ': ' + quoted(text_of(buffer))


class LineBuffer(Printer):
    def to_string(self):
        begin = int(self.value['m_nBegin'])
        held = length_of(self.value['m_strBytes']) - begin
        shown = ' '.join('%02X' % ord(byte) for byte in text_of(self.value['m_strBytes'], begin))
        return counted(held, 'byte') + (': ' + shown if held else '')


class LineOptions(Printer):
    def to_string(self):
        parity = str(self.value['m_eParity']).rsplit('_', 1)[-1].capitalize()[0]
        bits = str(self.value['m_eByteSize']).rsplit('_', 1)[-1]
        stop = str(self.value['m_eStopbits']).rsplit('_', 1)[-1]
        return '%d bit/s %s%s%s' % (int(self.value['m_nSpeed']), bits, parity, stop)


class SerialLine(Printer):
    def to_string(self):
        state = target_of(self.value['m_pState'])
        handle = int(state['m_hLine'])
        if handle == NO_HANDLE:
            return 'closed line'
        error = int(state['m_nHangupErrno'])
        return 'line on handle %d, %s, %s held%s' % (
            handle, LineOptions(state['m_oDevice']['m_oOptions']).to_string(),
            LineBuffer(state['m_oHeld']).to_string(),
            ', hung up (errno %d)' % error if error else '')


class Serial(Printer):
    def to_string(self):
        handle = int(self.value['m_hPort'])
        if handle == NO_HANDLE:
            return 'closed port'
        held = MutexBuffer(self.value['m_oRcvBuffer']).to_string()
        return 'port on handle %d, received %s' % (handle, held)


class EventLoop(Printer):
    KINDS = ('free', 'timer', 'handle', 'signal')

    def __init__(self, value):
        super().__init__(value)
        self.core = target_of(value['m_pCore'])
        tickets = elements_of(self.core['m_oTickets']['m_vecTickets'])
        self.tickets = [ticket for ticket in tickets if self.kind(ticket) != 'free']

    def kind(self, ticket):
        return self.KINDS[int(ticket['m_eKind'])]

    def to_string(self):
        kinds = [self.kind(ticket) for ticket in self.tickets]
        posts = self.core['m_oPosts']
        waiting = count_of(posts['m_vecNew']) + count_of(posts['m_vecTaken'])
        counts = [counted(kinds.count(kind), kind) for kind in self.KINDS[1:]]
        counts.append(counted(waiting - int(posts['m_nNext']), 'posted call'))
        return 'event loop, ' + ', '.join(counts)

    def meaning(self, ticket):
        kind, key, value = self.kind(ticket), int(ticket['m_nKey']), int(ticket['m_nValue'])
        if kind == 'timer':
            return 'timer, ' + ('every %d ms' % value if value else 'once')
        return '%s %d' % (kind, key)

    def children(self):
        return (('[%d]' % int(ticket['m_nTicket']), self.meaning(ticket)) for ticket in self.tickets)


class Guarded:
    """A printer that says why a value cannot be shown rather than failing."""

    def __init__(self, printer, value):
        self.value = value
        try:
            self.printer = printer(value)
            self.text = self.printer.to_string()
            if hasattr(self.printer, 'children'):
                self.children = self.printer.children
            if hasattr(self.printer, 'display_hint'):
                self.display_hint = self.printer.display_hint
        except gdb.MemoryError as reason:
            self.text = '<%s: %s>' % (self.name(), reason)
        except Exception:
            self.text = '<%s: needs the debug information of tarvo-ext>' % self.name()

    def name(self):
        return self.value.type.unqualified().strip_typedefs()

    def to_string(self):
        return self.text


PRINTERS = {
    'CKorTimeDiff': TimeDiff,
    'CKorUTCTime': UTCTime,
    'CKorLocalTime': LocalTime,
    'CKorZoneTime': ZoneTime,
    'CKorTimeZone': TimeZone,
    'CKorTimeout': Timeout,
    'CKorStopwatch': Stopwatch,
    'CKorIniOptionExchange': IniDocument,
    'CKorIniOptionExchange::SOptionLine': IniLine,
    'CKorIniFile': IniFile,
    'CKorSafeIniFile': SafeIniFile,
    'SKorIniFinding': IniFinding,
    'CKorMutexBuffer': MutexBuffer,
    'CKorLineBuffer': LineBuffer,
    'SKorLineOptions': LineOptions,
    'CKorSerialLine': SerialLine,
    'CKorSerial': Serial,
    'CKorEventLoop': EventLoop,
}


def collection():
    printers = gdb.printing.RegexpCollectionPrettyPrinter('tarvo-ext')
    for name, printer in PRINTERS.items():
        printers.add_printer(name, '^%s$' % name,
                             lambda value, printer=printer: Guarded(printer, value))
    return printers


gdb.printing.register_pretty_printer(gdb.current_objfile(), collection(), replace=True)
