#!/usr/bin/env python3
"""Writes N synthetic applications for the Antrag rule module to standard
output, in the CSV form quorel-check reads (Windows-1252)."""
import random
import sys

HEADER = ("Antrag.Antragsnummer;Antrag.Antragsteller.Name;Antrag.Antragsteller.Vorname;"
          "Antrag.Antragsteller.Geburtsdatum;Antrag.Antragsteller.Familienstand;Antrag.Adresse.Strasse;"
          "Antrag.Adresse.PLZ;Antrag.Adresse.Ort;Antrag.Kinder#;Antrag.Kinder[0].Vorname;"
          "Antrag.Kinder[0].Geburtsdatum;Antrag.Kinder[1].Vorname;Antrag.Kinder[1].Geburtsdatum;"
          "Antrag.Betrag;Antrag.Antragsdatum;Antrag.Einkommen#;Antrag.Einkommen[0];Antrag.Einkommen[1]")
NAMES = ["M\xfcller", "Schmidt", "Schneider", "Fischer", "Weber", ""]
PLACES = [("10115", "Berlin"), ("20095", "Hamburg"), ("80331", "M\xfcnchen"), ("8001", "Bremen")]


def date(rng, first, last):
    return "%02d.%02d.%04d" % (rng.randint(1, 28), rng.randint(1, 12), rng.randint(first, last))


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 1000
    rng = random.Random(7)
    out = sys.stdout.buffer
    out.write((HEADER + "\n").encode("latin-1"))
    for i in range(count):
        plz, ort = rng.choice(PLACES)
        row = ["AB-%06d" % i, rng.choice(NAMES), "Vorname", date(rng, 1950, 2010), rng.choice("LVGWX"),
               "Weg %d" % i, plz, ort, "2", "Kind", date(rng, 2000, 2020), "", date(rng, 2000, 2020),
               "%d,%02d" % (rng.randint(0, 12000), rng.randint(0, 99)), date(rng, 2023, 2024), "2",
               "%d,00" % rng.randint(1000, 7000), "%d,00" % rng.randint(1000, 7000)]
        out.write((";".join(row) + "\n").encode("latin-1"))


if __name__ == "__main__":
    main()
