#!/usr/bin/env python3
"""Random rule files over one record type, with records and a material for
them, for comparing a rule file run by the interpreter with the same file
compiled to C++.

  generate_rules.py rules SEED      a rule file (UTF-8) on standard output
  generate_rules.py records N       N records (CSV, Windows-1252)
  generate_rules.py material        the material M (CSV)
  generate_rules.py material-db F   the material M as the table M of the SQLite file F, whose
                                    column of M.S has the name the rule files give it
"""
import random
import sys

RECORD = """MODUL Zufall

SATZ Z
  FELD T1 TEXT
  FELD T2 "Zweiter Text" TEXT SPALTE "TEXT_2"
  FELD N1 GANZZAHL
  FELD N2 GANZZAHL
  FELD R1 KOMMAZAHL
  FELD B1 "Betrag" KOMMAZAHL SPALTE "BETRAG" MASKE "####.##0"
  FELD D1 DATUM MASKE "TT.MM.JJJJ"
  FELD W WAHRHEITSWERT
  GRUPPE G
    FELD X TEXT
    FELD Y GANZZAHL
  ENDE
  GRUPPE K[0]
    FELD V TEXT SPALTE "KIND_VÖRNAME"
    FELD Z GANZZAHL
  ENDE
  FELD L[4] GANZZAHL SPALTE "L"
ENDE

MATERIAL M
  FELD S TEXT SPALTE "kurztext"
  FELD Q GANZZAHL
ENDE

KODELISTE
  "A" = "alpha"
  "B" = "beta" MIT
    "C" = "gamma"
  ENDE
ENDE

EXTERN Nie(0)

FUNKTION Helfer(a; b)
  WENN GUELTIG(a) UND a > b DANN
    ERGEBNIS a - b
  ENDE
  ERGEBNIS b
ENDE

FUNKTION Kennzahl
  ERGEBNIS Helfer(Z.N1; 3) * 2
ENDE

FELDPRUEFUNG Z.L ALS element ABSCHNITT "Pruefung L"
  WENN element > 50 DANN
    MELDE HINWEIS "L-GROSS" GEWICHT 1 FELD element TEXT "L ist " & element
  ENDE
ENDE
"""


class Rules:
    def __init__(self, seed):
        self.seed = seed
        self.rng = random.Random(seed)
        self.ids = 0
        self.var = 0
        self.out = []

    def pick(self, *choices):
        return self.rng.choice(choices)

    def number(self, depth=0, scope=()):
        r = self.rng
        leaves = ["Z.N1", "Z.N2", "Z.R1", "Z.G.Y", "Z.L[%d]" % r.randint(0, 3), str(r.randint(-5, 100)),
                  "%d,%d" % (r.randint(0, 50), r.randint(1, 9)), "ANZAHL(Z.K)", "WERTLAENGE(Z.T1)"]
        leaves += [v for v, kind in scope if kind == "number"]
        if depth > 2 or r.random() < 0.4:
            return r.choice(leaves)
        a, b = self.number(depth + 1, scope), self.number(depth + 1, scope)
        return r.choice([
            "(%s + %s)" % (a, b), "(%s - %s)" % (a, b), "(%s * %s)" % (a, b), "-%s" % a,
            "ABSOLUTWERT(%s)" % a, "RUNDEN(%s; %d)" % (a, r.randint(0, 2)), "RUNDEN(%s)" % a,
            "ALS_GANZZAHL(%s)" % a, "MAXIMUM_AUS_LISTE(Z.L)", "Helfer(%s; %s)" % (a, b), "Kennzahl()",
            "JAHR(Z.D1)", "MONAT(Z.D1)", "EXPONENT(%s; 2)" % a,
        ])

    def text(self, depth=0, scope=()):
        r = self.rng
        leaves = ["Z.T1", "Z.T2", "Z.G.X", '"abc"', '"\u00e4\u00f6\u00fc"', '""', "Z.K[0].V"]
        leaves += [v for v, kind in scope if kind == "text"]
        if depth > 2 or r.random() < 0.5:
            return r.choice(leaves)
        a, b = self.text(depth + 1, scope), self.text(depth + 1, scope)
        return r.choice([
            "%s & %s" % (a, b), "GROSSBUCHSTABEN(%s)" % a, "KLEINBUCHSTABEN(%s)" % a,
            "TEIL(%s; 1; 2)" % a, 'ERSETZEN(%s; "a"; "x")' % a, "ALS_ZEICHENKETTE(%s)" % self.number(depth + 1, scope),
            "%s & %s" % (a, self.number(depth + 1, scope)), "JAHR_ALS_ZEICHENKETTE(Z.D1)",
        ])

    def condition(self, depth=0, scope=()):
        r = self.rng
        if depth > 2 or r.random() < 0.5:
            n, t = self.number(depth + 1, scope), self.text(depth + 1, scope)
            return r.choice([
                "%s %s %s" % (n, r.choice(["=", "<>", "<", "<=", ">", ">="]), self.number(depth + 1, scope)),
                "%s = %s" % (t, self.text(depth + 1, scope)),
                "GUELTIG(%s)" % r.choice(["Z.T1", "Z.N1", "Z.D1", "Z.B1", "Z.K[1].Z"]),
                "%s IN [%d .. %d]" % (n, r.randint(-5, 20), r.randint(20, 80)),
                "%s IN (%d .. %d]" % (n, r.randint(-5, 20), r.randint(20, 80)),
                "%s IN {1; 2; [5 .. 9)}" % n,
                "%s IN [0; 5 .. 100]" % n,
                'HAT_FORMAT("[a-z]+"; %s)' % t, 'BEGINNT_MIT(%s; "a")' % t, "NUMERISCH(%s)" % t,
                'PASST(Z.B1; KOMMAZAHL; "####.##0")', 'PASST(Z.D1; DATUM; "TT.MM.JJJJ")',
                "Z.T1 IN KODE(\"B\")", "GUELTIG(KODE(Z.T2))", "Z.W", "Z.D1 > 01.01.2000",
                "(EXISTIERT M WO S = %s)" % t, "%s IN (LIES S AUS M WO Q > %d)" % (t, r.randint(0, 10)),
                "BRAUCHBAR(PARAMETER(\"Grenze\"))",
            ])
        a, b = self.condition(depth + 1, scope), self.condition(depth + 1, scope)
        return r.choice(["(%s UND %s)" % (a, b), "(%s ODER %s)" % (a, b), "NICHT %s" % a])

    def report(self, indent, scope, field=None):
        r = self.rng
        self.ids += 1
        kind = r.choice(["FEHLER", "HINWEIS", "TYP 3"])
        field = field or r.choice(["Z.T1", "Z.N1", "Z.G.X", "Z.L", "Z.K", "Z.L[2]"])
        line = '%sMELDE %s "R-%d" GEWICHT %d FELD %s TEXT %s' % (
            indent, kind, self.ids, r.randint(1, 5), field, self.text(1, scope))
        if r.random() < 0.5:
            line += " DETAILS %s & %s" % (self.text(1, scope), self.number(1, scope))
        if r.random() < 0.2:
            line += " INDIZES %d" % r.randint(0, 3)
        self.out.append(line)

    def statements(self, indent, depth, scope, loop):
        r = self.rng
        for _ in range(r.randint(1, 4)):
            choice = r.random()
            nested_loop = loop and 0.65 <= choice < 0.88  # loops in loops would report without end
            if depth > 2 or choice < 0.3 or nested_loop:
                self.report(indent, scope)
            elif choice < 0.45:
                self.var += 1
                name = "v%d" % self.var
                kind = r.choice(["number", "text"])
                value = self.number(0, scope) if kind == "number" else self.text(0, scope)
                self.out.append("%sSEI %s = %s" % (indent, name, value))
                scope = scope + ((name, kind),)
                if r.random() < 0.5:
                    self.out.append("%sABSCHNITT \"Innen\"" % indent)
                    setter = self.number(1, scope) if kind == "number" else self.text(1, scope)
                    self.out.append("%s  SETZE %s = %s" % (indent, name, setter))
                    self.out.append("%sENDE" % indent)
            elif choice < 0.65:
                self.out.append("%sWENN %s DANN" % (indent, self.condition(0, scope)))
                self.statements(indent + "  ", depth + 1, scope, loop)
                if r.random() < 0.4:
                    self.out.append("%sSONST WENN %s DANN" % (indent, self.condition(0, scope)))
                    self.statements(indent + "  ", depth + 1, scope, loop)
                if r.random() < 0.5:
                    self.out.append("%sSONST" % indent)
                    self.statements(indent + "  ", depth + 1, scope, loop)
                self.out.append("%sENDE" % indent)
            elif choice < 0.75:
                self.out.append("%sFUER JEDES kind IN Z.K ABSCHNITT \"Kind\"" % indent)
                self.out.append("%s  WENN NICHT GUELTIG(kind.V) ODER kind.Z > %d DANN" % (indent, r.randint(0, 9)))
                self.report(indent + "    ", scope, "kind.V")
                if r.random() < 0.3:
                    self.out.append("%s    ABBRECHEN" % indent)
                self.out.append("%s  ENDE" % indent)
                self.out.append("%sENDE" % indent)
            elif choice < 0.82:
                self.out.append("%sFUER i VON 0 BIS 3%s" % (indent, r.choice(["", ' ABSCHNITT "Runde"'])))
                self.statements(indent + "  ", depth + 1, scope + (("i", "number"),), True)
                self.out.append("%sENDE" % indent)
            elif choice < 0.88:
                self.out.append("%sFUER JEDES s IN LIES S, Q AUS M WO Q >= %d" % (indent, r.randint(0, 5)))
                self.statements(indent + "  ", depth + 1, scope + (("s", "text"),), True)
                self.out.append("%sENDE" % indent)
            elif choice < 0.95:
                self.out.append("%sVERSUCHE" % indent)
                risky = r.choice(["%s / Z.N2" % self.number(1, scope), 'ZAHL_NACH_MASKE(Z.B1; "####.##0")',
                                  "MODULO(Z.N1; Z.N2)", "Nie()", "WERTLAENGE(UNUMWANDELBAR(\"weg\"))"])
                self.out.append("%s  SEI riskant = %s" % (indent, risky))
                self.report(indent + "  ", scope)
                self.out.append("%sBEI FEHLER grund" % indent)
                self.out.append('%s  MELDE FEHLER "X-%d" GEWICHT 2 TEXT "Fehler" DETAILS grund' % (indent, self.ids))
                self.ids += 1
                self.out.append("%sENDE" % indent)
            elif loop and choice < 0.97:
                self.out.append("%sABBRECHEN" % indent)
                return
            else:
                self.out.append("%sPRUEFE Z.L[%d]" % (indent, r.randint(0, 3)))

    def module(self):
        count = self.rng.randint(4, 8)
        names = ["Regel%d" % i for i in range(count)]
        self.out.append(RECORD)
        # Some files leave the flows out: their one flow, Pruefung, runs every rule.
        if self.seed % 4 != 0:
            self.out.append("ABLAUF Pruefung: " + ", ".join(names))
            self.out.append("ABLAUF Teil: " + ", ".join(names[::2]))
        for name in names:
            self.out.append('\nREGEL %s ABSCHNITT "Regel %s"' % (name, name))
            first = len(self.out)
            self.statements("  ", 0, (), False)
            self.out[first:] = one_line(self.out[first:])
            self.out.append("ENDE")
        return "\n".join(self.out) + "\n"


def one_line(lines):
    """The statements of a rule with every WENN of one statement on one line,
    and no SONST after it, in the one-line form, a MELDE going on with its
    DETAILS on the next line. A rule with a WENN on the line after SONST stays
    as it is: one-line WENNs may make its ENDEs fit two readings."""
    if any(a.strip() == "SONST" and b.lstrip().startswith("WENN ") for a, b in zip(lines, lines[1:])):
        return lines
    out = []
    i = 0
    while i < len(lines):
        line = lines[i]
        indent = line[:len(line) - len(line.lstrip())]
        rest = lines[i + 1:i + 4] + ["", "", ""]
        if (line.lstrip().startswith("WENN ") and line.endswith(" DANN") and rest[1] == indent + "ENDE"
                and not rest[2].lstrip().startswith("SONST")):
            statement = rest[0].strip().split(" DETAILS ")
            out.append(line + " " + statement[0])
            out += ["%s    DETAILS %s" % (indent, more) for more in statement[1:]]
            i += 3
        else:
            out.append(line)
            i += 1
    return out


def records(count):
    rng = random.Random(5)
    header = ["Z.T1", "Z.T2", "Z.N1", "Z.N2", "Z.R1", "Z.B1", "Z.D1", "Z.W", "Z.G.X", "Z.G.Y", "Z.K#",
              "Z.K[0].V", "Z.K[0].Z", "Z.K[1].V", "Z.K[1].Z", "Z.L[0]", "Z.L[1]", "Z.L[2]", "Z.L[3]"]
    out = sys.stdout.buffer
    out.write((";".join(header) + "\n").encode("cp1252"))

    def rare(value, odd):
        return odd if rng.random() < 0.03 else value

    for _ in range(count):
        texts = ["A", "B", "C", "abc", "", "\u00e4pfel", "X1"]
        row = [rng.choice(texts), rng.choice(texts), rare(str(rng.randint(-10, 60)), "x"), rng.choice(["0", "2", "7", ""]),
               rng.choice(["1,5", "-3,25", "", "100"]), rng.choice(["1.234,56", "12,3", "", "abc", "1,234"]),
               rng.choice(["01.02.2003", "31.02.2020", "", "15.06.1999"]), rng.choice(["wahr", "falsch", ""]),
               rng.choice(texts), rare(str(rng.randint(0, 9)), ""), str(rng.randint(0, 2)),
               rng.choice(texts), str(rng.randint(0, 12)), rng.choice(texts), str(rng.randint(0, 12))]
        row += [str(rng.randint(0, 80)) for _ in range(4)]
        out.write((";".join(row) + "\n").encode("cp1252"))


MATERIAL_ROWS = (("A", 1), ("abc", 3), ("B", 7), ("X1", 12), ("", 5))


def material():
    print("M.S;M.Q")
    for s, q in MATERIAL_ROWS:
        print("%s;%d" % (s, q))


def material_db(path):
    import os
    import sqlite3
    if os.path.exists(path):
        os.remove(path)
    db = sqlite3.connect(path)
    db.execute("CREATE TABLE M (kurztext TEXT, Q INTEGER)")
    db.executemany("INSERT INTO M VALUES (?, ?)", MATERIAL_ROWS)
    db.commit()
    db.close()


if __name__ == "__main__":
    mode = sys.argv[1]
    if mode == "rules":
        sys.stdout.buffer.write(Rules(int(sys.argv[2])).module().encode("utf-8"))
    elif mode == "records":
        records(int(sys.argv[2]))
    elif mode == "material-db":
        material_db(sys.argv[2])
    else:
        material()
