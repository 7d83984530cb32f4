#!/usr/bin/env python3
"""Writes N synthetic questionnaires for the Umfrage rule module to standard
output, in the CSV form quorel-check reads (Windows-1252), with the faults
its rules look for and a few they do not expect (letters in numbers)."""
import random
import sys

HEADER = ("Umfrage.Name;Umfrage.Alter;Umfrage.Einkommen;Umfrage.Datum;Umfrage.PLZ;"
          "Umfrage.Antworten[0].Frage;Umfrage.Antworten[0].Note;Umfrage.Antworten[1].Frage;"
          "Umfrage.Antworten[1].Note;Umfrage.Antworten[2].Frage;Umfrage.Antworten[2].Note")


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 1000
    rng = random.Random(11)
    out = sys.stdout.buffer
    out.write((HEADER + "\n").encode("latin-1"))
    names = ["Berger", "M\xfcller", "", "Wei\xdf"]
    ages = ["34", "12", "16", "99", "100", "", "abc", "-3"]
    incomes = ["2.345,67", "2345,678", "", "12,5", "1.23,00", "x", "-5,00", "0", "123.456,78"]
    dates = ["03.05.2024", "31.02.2024", "", "1.1.2024", "29.02.2024", "2024-01-01"]
    postcodes = ["80331", "1234", "", "8O331", "123456"]
    notes = ["1", "6", "0", "7", "", "3", "x", "2,5"]
    for _ in range(count):
        row = [rng.choice(names), rng.choice(ages), rng.choice(incomes), rng.choice(dates), rng.choice(postcodes)]
        for question in ("Zufrieden?", "Preis?", "Service?"):
            row += [rng.choice([question, ""]), rng.choice(notes)]
        out.write((";".join(row) + "\n").encode("latin-1"))


if __name__ == "__main__":
    main()
