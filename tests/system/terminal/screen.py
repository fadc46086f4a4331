"""What a terminal shows: as much of one as the console of Wine asks for."""
import re

ROWS, COLUMNS = 30, 100

SEQUENCE = re.compile(rb"\x1b\[(\??)([0-9;]*)([A-Za-z])|([\r\n\b])|([^\x1b\r\n\b]+)")


class Screen:
    def __init__(self):
        self.lines = [[" "] * COLUMNS for _ in range(ROWS)]
        self.row = self.column = 0
        self.scrolled = 0
        self._rest = b""

    def take(self, data):
        data = self._rest + data
        at = 0
        while at < len(data):
            match = SEQUENCE.match(data, at)
            if not match:  # the end of a sequence is still to come
                break
            private, numbers, final, control, text = match.groups()
            if text:
                self._write(text.decode(errors="replace"))
            elif control:
                self._control(control)
            elif not private:
                self._sequence([int(n) if n else 1 for n in numbers.split(b";")], final)
            at = match.end()
        self._rest = data[at:]

    def _write(self, text):
        for character in text:
            self.column = min(self.column, COLUMNS - 1)
            self.lines[self.row][self.column] = character
            self.column += 1

    def _control(self, control):
        if control == b"\r":
            self.column = 0
        elif control == b"\b":
            self.column = max(self.column - 1, 0)
        elif self.row + 1 < ROWS:
            self.row += 1
        else:
            self.lines = self.lines[1:] + [[" "] * COLUMNS]
            self.scrolled += 1

    def _sequence(self, numbers, final):
        count = numbers[0]
        if final == b"A":
            self.row = max(self.row - count, 0)
        elif final == b"B":
            self.row = min(self.row + count, ROWS - 1)
        elif final == b"C":
            self.column += count
        elif final == b"D":
            self.column = max(self.column - count, 0)
        elif final == b"H":
            self.row, self.column = count - 1, (numbers[1] if len(numbers) > 1 else 1) - 1
        elif final == b"K":
            self.lines[self.row][self.column:] = [" "] * (COLUMNS - self.column)
        elif final == b"J":
            self.lines = [[" "] * COLUMNS for _ in range(ROWS)]
        elif final != b"m":
            raise ValueError(f"an unknown sequence: {numbers} {final}")

    def text(self):
        return [" ".join("".join(line).split()) for line in self.lines]

    def row_of(self, word):
        return next((line.split() for line in self.text() if line.startswith(word)), None)
