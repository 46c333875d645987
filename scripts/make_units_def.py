#!/usr/bin/env python3
"""Writes data/x_units.def, the units registry's definitions file.

The units, their series and their names are the catalogue below; every
conversion factor comes from the Energistics Unit of Measure Standard 1.0,
whose factual columns for the units used here are kept in data/uom-factors.csv
(symbol, baseUnit, A, B, C, D: y = (A + B x) / (C + D x), x in the unit, y in
its base unit). The script also writes data/x_units-sources.csv, which says for
every unit which row of the factors it comes from, so that tests can check each
unit against the data's own formula.

    scripts/make_units_def.py                     write the two files in data/
    scripts/make_units_def.py --check             fail if they are not up to date
    scripts/make_units_def.py --factors-from CSV  first refresh data/uom-factors.csv
                                                  from the full Energistics table

Rules the conversion arithmetic relies on, checked here before anything is
written (see docs/file-formats.md):
 * a unit whose id equals the first-entry number of a series holding it is taken
   as the dimension's SI unit, so only such a unit (c1 = 1, nothing else) may
   sit there;
 * a velocity and a slowness with no offsets convert directly as reciprocals,
   exact only when their c1 values multiply to 1: every other reciprocal unit
   carries a fourth coefficient (c4 = 1), which sends it through the SI unit;
 * the units a series held before keep their names and positions, so that
   saved sessions and files read the same; new units go at the end.
"""
import argparse
import csv
import io
import os
import sys
from fractions import Fraction

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
FACTORS = os.path.join(ROOT, "data", "uom-factors.csv")
SOURCES = os.path.join(ROOT, "data", "x_units-sources.csv")
OUTPUT = os.path.join(ROOT, "data", "x_units.def")

# Base units of the data that stand for another base unit. The API darcy is one
# square micrometre, so the data's teradarcy-API is one square metre.
BASE_EQUIVALENTS = {"TD[API]": "m2"}

# Dimensions: name, the data's base unit of the dimension, and for a dimension
# that also holds reciprocal units (slowness against velocity) their base.
DIMENSIONS = [
    ("dimensionless", "Euc", None),
    ("length", "m", None),
    ("pressure", "Pa", None),
    ("temperature", "K", None),
    ("density", "kg/m3", None),
    ("viscosity", "Pa.s", None),
    ("volume ratio", "m3/m3", None),
    ("compressibility", "1/Pa", None),
    ("relative density", "Euc", None),
    ("velocity", "m/s", "s/m"),
    ("area", "m2", None),
    ("volume", "m3", None),
    ("time", "s", None),
    ("plane angle", "rad", None),
    ("volume rate", "m3/s", None),
    ("pressure gradient", "N/m3", None),
    ("temperature gradient", "deltaK/m", None),
    ("kinematic viscosity", "m2/s", None),
    ("resistivity", "ohm.m", None),
    ("conductivity", "S/m", None),
    ("api gamma ray", "gAPI", None),
    ("mass", "kg", None),
    ("force", "N", None),
    ("energy", "J", None),
    ("power", "W", None),
]

# Where a unit's factor comes from:
#   "sym"                       the data's row of that symbol
#   ("per", "sym")              one over the unit of that row (1/MPa)
#   ("gauge", "sym", "zero")    the unit of "sym" counted from the pressure of "zero"
#   ("reciprocal", "sym")       a unit whose data base is the dimension's reciprocal base
#   ("defined", c1, c2, c3)     a unit the data holds no conversion for (API gravity is
#                               defined by sg = 141.5 / (API + 131.5) and nothing else)
# Units: name, other name (a name people type), dimension, source, description.
# The first KEPT_UNITS are the units of the file before it was generated, in
# their order and with their ids.
KEPT_UNITS = 78
UNITS = [
    ("-", "none", "dimensionless", "Euc", "plain number"),
    (" ", "blank", "dimensionless", "Euc", "plain number, no unit shown"),
    ("fr", "fraction", "dimensionless", "Euc", "fraction"),
    ("v/v", "vol frac", "dimensionless", "Euc", "volume fraction"),
    ("vol/vol", "volume fraction", "dimensionless", "Euc", "volume per volume"),
    ("%", "percent", "dimensionless", "%", "percent"),
    ("pu", "porosity unit", "dimensionless", "%", "porosity unit (percent)"),
    ("p.u.", "pu", "dimensionless", "%", "porosity unit (percent)"),
    ("m", "metre", "length", "m", "metre"),
    ("ft", "feet", "length", "ft", "international foot"),
    ("in", "inch", "length", "in", "inch"),
    ("cm", "centimetre", "length", "cm", "centimetre"),
    ("mm", "millimetre", "length", "mm", "millimetre"),
    ("km", "kilometre", "length", "km", "kilometre"),
    ("mi", "mile", "length", "mi", "international mile"),
    ("pa", "pascal", "pressure", "Pa", "pascal"),
    ("psia", "psi", "pressure", "psi", "pound-force per square inch, absolute"),
    ("psig", "psi gauge", "pressure", ("gauge", "psi", "atm"), "psi above one standard atmosphere"),
    ("kpa", "kilopascal", "pressure", "kPa", "kilopascal"),
    ("mpa", "megapascal", "pressure", "MPa", "megapascal"),
    ("bar", "bars", "pressure", "bar", "bar"),
    ("atm", "atmosphere", "pressure", "atm", "standard atmosphere"),
    ("kg/cm2", "at", "pressure", "kgf/cm2", "kilogram-force per square centimetre"),
    ("degk", "K", "temperature", "K", "kelvin"),
    ("degc", "celsius", "temperature", "degC", "degree Celsius"),
    ("degf", "fahrenheit", "temperature", "degF", "degree Fahrenheit"),
    ("degr", "rankine", "temperature", "degR", "degree Rankine"),
    ("kg/m3", "kg/m^3", "density", "kg/m3", "kilogram per cubic metre"),
    ("g/cc", "g/cm3", "density", "g/cm3", "gram per cubic centimetre"),
    ("lb/ft3", "lbm/ft3", "density", "lbm/ft3", "pound per cubic foot"),
    ("lb/gal", "ppg", "density", "lbm/gal[US]", "pound per US gallon (mud weight)"),
    ("pa.s", "pascal second", "viscosity", "Pa.s", "pascal second"),
    ("cp", "centipoise", "viscosity", "cP", "centipoise"),
    ("mpa.s", "millipascal s", "viscosity", "mPa.s", "millipascal second"),
    ("m3/m3", "sm3/sm3", "volume ratio", "m3/m3", "cubic metre per cubic metre"),
    ("scf/stb", "scf/bbl", "volume ratio", "ft3/bbl", "standard cubic foot per stock-tank barrel"),
    ("mscf/stb", "mcf/bbl", "volume ratio", "1000 ft3/bbl", "thousand standard cubic feet per stock-tank barrel"),
    ("bbl/stb", "rb/stb", "volume ratio", "bbl/bbl", "reservoir barrel per stock-tank barrel"),
    ("rm3/sm3", "m3/sm3", "volume ratio", "m3/m3", "reservoir cubic metre per standard cubic metre"),
    ("scf/cf", "scf/ft3", "volume ratio", "ft3/ft3", "standard cubic foot per reservoir cubic foot"),
    ("sm3/m3", "sm3/rm3", "volume ratio", "m3/m3", "standard cubic metre per reservoir cubic metre"),
    ("scf/rb", "scf/rbbl", "volume ratio", "ft3/bbl", "standard cubic foot per reservoir barrel"),
    ("1/pa", "1/pascal", "compressibility", "1/Pa", "per pascal"),
    ("1/psi", "1/psia", "compressibility", "1/psi", "per psi"),
    ("1/kpa", "1/kilopascal", "compressibility", "1/kPa", "per kilopascal"),
    ("1/bar", "1/bars", "compressibility", "1/bar", "per bar"),
    ("1/mpa", "1/megapascal", "compressibility", ("per", "MPa"), "per megapascal"),
    ("sg", "(wat=1)", "relative density", "Euc", "specific gravity (water = 1)"),
    ("api", "degapi", "relative density", ("defined", Fraction(2, 283), 131.5, -1), "API gravity"),
    ("(air=1)", "sg gas", "relative density", "Euc", "gas gravity (air = 1)"),
    ("m/s", "metre/second", "velocity", "m/s", "metre per second"),
    ("ft/s", "feet/second", "velocity", "ft/s", "foot per second"),
    ("km/s", "kilometre/second", "velocity", "km/s", "kilometre per second"),
    ("us/ft", "microsec/ft", "velocity", ("reciprocal", "us/ft"), "microsecond per foot (slowness)"),
    ("us/m", "microsec/m", "velocity", ("reciprocal", "us/m"), "microsecond per metre (slowness)"),
    ("s/m", "second/metre", "velocity", ("reciprocal", "s/m"), "second per metre (slowness)"),
    ("m2", "sq metre", "area", "m2", "square metre"),
    ("ft2", "sq feet", "area", "ft2", "square foot"),
    ("acre", "acres", "area", "acre", "acre"),
    ("ha", "hectare", "area", "ha", "hectare"),
    ("km2", "sq kilometre", "area", "km2", "square kilometre"),
    ("md", "millidarcy", "area", "mD", "millidarcy (permeability)"),
    ("darcy", "D", "area", "D", "darcy (permeability)"),
    ("um2", "sq micrometre", "area", "um2", "square micrometre"),
    ("m3", "cubic metre", "volume", "m3", "cubic metre"),
    ("bbl", "barrel", "volume", "bbl", "oil barrel (42 US gallons)"),
    ("ft3", "cf", "volume", "ft3", "cubic foot"),
    ("l", "litre", "volume", "L", "litre"),
    ("gal", "us gallon", "volume", "gal[US]", "US gallon"),
    ("mcf", "mscf", "volume", "1000 ft3", "thousand cubic feet"),
    ("s", "second", "time", "s", "second"),
    ("ms", "millisecond", "time", "ms", "millisecond"),
    ("min", "minute", "time", "min", "minute"),
    ("hr", "h", "time", "h", "hour"),
    ("day", "d", "time", "d", "day"),
    ("yr", "julian year", "time", "a", "julian year (365.25 days)"),
    ("rad", "radian", "plane angle", "rad", "radian"),
    ("deg", "degree", "plane angle", "dega", "degree of angle"),
    # --- units added when the file became generated
    ("ftUS", "ft[US]", "length", "ft[US]", "US survey foot"),
    ("um", "micron", "length", "um", "micrometre"),
    ("psi", "lbf/in2", "pressure", "psi", "pound-force per square inch"),
    ("mbar", "millibar", "pressure", "mbar", "millibar"),
    ("GPa", "gigapascal", "pressure", "GPa", "gigapascal"),
    ("mmHg", "mm Hg", "pressure", "mmHg[0degC]", "millimetre of mercury at 0 degC"),
    ("inHg", "in Hg", "pressure", "inHg[32degF]", "inch of mercury at 32 degF"),
    ("torr", "Torr", "pressure", "torr", "torr (1/760 standard atmosphere)"),
    ("mPa", "millipascal", "pressure", "mPa", "millipascal"),
    ("g/L", "g/l", "density", "g/L", "gram per litre"),
    ("lbm/bbl", "ppb", "density", "lbm/bbl", "pound per barrel"),
    ("mg/L", "mg/l", "density", "mg/L", "milligram per litre"),
    ("P", "poise", "viscosity", "P", "poise"),
    ("ppm", "ppmv", "dimensionless", "ppm", "part per million"),
    ("ppk", "ppt", "dimensionless", "ppk", "part per thousand"),
    ("stb", "STB", "volume", "bbl", "stock-tank barrel"),
    ("scf", "SCF", "volume", "ft3", "standard cubic foot"),
    ("cm3", "cc", "volume", "cm3", "cubic centimetre"),
    ("galUK", "gal[UK]", "volume", "gal[UK]", "imperial (UK) gallon"),
    ("acre.ft", "acre-ft", "volume", "acre.ft", "acre-foot"),
    ("Mbbl", "Mstb", "volume", "1000 bbl", "thousand barrels"),
    ("MMbbl", "MMstb", "volume", "1E6 bbl", "million barrels"),
    ("MMcf", "MMscf", "volume", "1E6 ft3", "million cubic feet"),
    ("e3m3", "1000 m3", "volume", "1000 m3", "thousand cubic metres"),
    ("in2", "sq inch", "area", "in2", "square inch"),
    ("cm2", "sq centimetre", "area", "cm2", "square centimetre"),
    ("mi2", "sq mile", "area", "mi2", "square mile"),
    ("wk", "week", "time", "wk", "week"),
    ("us", "microsecond", "time", "us", "microsecond"),
    ("ft/h", "ft/hr", "velocity", "ft/h", "foot per hour"),
    ("m/h", "m/hr", "velocity", "m/h", "metre per hour"),
    ("ft/min", "fpm", "velocity", "ft/min", "foot per minute"),
    ("m/min", "m/mn", "velocity", "m/min", "metre per minute"),
    ("ft/d", "ft/day", "velocity", "ft/d", "foot per day"),
    ("m/d", "m/day", "velocity", "m/d", "metre per day"),
    ("m3/s", "cumecs", "volume rate", "m3/s", "cubic metre per second"),
    ("bbl/d", "stb/d", "volume rate", "bbl/d", "barrel per day"),
    ("m3/d", "sm3/d", "volume rate", "m3/d", "cubic metre per day"),
    ("Mbbl/d", "Mstb/d", "volume rate", "1000 bbl/d", "thousand barrels per day"),
    ("bbl/h", "bph", "volume rate", "bbl/h", "barrel per hour"),
    ("bbl/min", "bpm", "volume rate", "bbl/min", "barrel per minute"),
    ("m3/h", "m3/hr", "volume rate", "m3/h", "cubic metre per hour"),
    ("m3/min", "m3/mn", "volume rate", "m3/min", "cubic metre per minute"),
    ("L/s", "l/sec", "volume rate", "L/s", "litre per second"),
    ("L/min", "lpm", "volume rate", "L/min", "litre per minute"),
    ("gal/min", "gpm", "volume rate", "gal[US]/min", "US gallon per minute"),
    ("scf/d", "cf/d", "volume rate", "ft3/d", "standard cubic foot per day"),
    ("Mscf/d", "Mcf/d", "volume rate", "1000 ft3/d", "thousand standard cubic feet per day"),
    ("MMscf/d", "MMcf/d", "volume rate", "1E6 ft3/d", "million standard cubic feet per day"),
    ("e3m3/d", "1000 m3/d", "volume rate", "1000 m3/d", "thousand cubic metres per day"),
    ("e6m3/d", "1E6 m3/d", "volume rate", "1E6 m3/d", "million cubic metres per day"),
    ("Pa/m", "pascal/metre", "pressure gradient", "Pa/m", "pascal per metre"),
    ("psi/ft", "psia/ft", "pressure gradient", "psi/ft", "psi per foot"),
    ("kPa/m", "kilopascal/m", "pressure gradient", "kPa/m", "kilopascal per metre"),
    ("bar/m", "bars/m", "pressure gradient", "bar/m", "bar per metre"),
    ("MPa/m", "megapascal/m", "pressure gradient", "MPa/m", "megapascal per metre"),
    ("psi/m", "psia/m", "pressure gradient", "psi/m", "psi per metre"),
    ("K/m", "degK/m", "temperature gradient", "deltaK/m", "kelvin per metre"),
    ("degF/100ft", "F/100ft", "temperature gradient", "0.01 deltaF/ft", "degree Fahrenheit per 100 feet"),
    ("degC/km", "C/km", "temperature gradient", "deltaC/km", "degree Celsius per kilometre"),
    ("degC/100m", "C/100m", "temperature gradient", "deltaC/hm", "degree Celsius per 100 metres"),
    ("degF/ft", "F/ft", "temperature gradient", "deltaF/ft", "degree Fahrenheit per foot"),
    ("degC/m", "C/m", "temperature gradient", "deltaC/m", "degree Celsius per metre"),
    ("K/km", "degK/km", "temperature gradient", "deltaK/km", "kelvin per kilometre"),
    ("m2/s", "sq metre/second", "kinematic viscosity", "m2/s", "square metre per second"),
    ("cSt", "centistokes", "kinematic viscosity", "cSt", "centistokes"),
    ("St", "stokes", "kinematic viscosity", "St", "stokes"),
    ("mm2/s", "sq mm/second", "kinematic viscosity", "mm2/s", "square millimetre per second"),
    ("ft2/s", "sq feet/second", "kinematic viscosity", "ft2/s", "square foot per second"),
    ("ohm.m", "ohmm", "resistivity", "ohm.m", "ohm metre (resistivity)"),
    ("ohm.cm", "ohmcm", "resistivity", "ohm.cm", "ohm centimetre (resistivity)"),
    ("S/m", "siemens/m", "conductivity", "S/m", "siemens per metre (conductivity)"),
    ("mS/m", "mmho/m", "conductivity", "mS/m", "millisiemens per metre (conductivity)"),
    ("mS/cm", "mmho/cm", "conductivity", "mS/cm", "millisiemens per centimetre (conductivity)"),
    ("gAPI", "API", "api gamma ray", "gAPI", "API gamma ray unit (gamma ray log)"),
    ("kg", "kilogram", "mass", "kg", "kilogram"),
    ("g", "gram", "mass", "g", "gram"),
    ("lbm", "lb", "mass", "lbm", "pound (mass)"),
    ("klbm", "klb", "mass", "klbm", "thousand pounds (mass)"),
    ("t", "tonne", "mass", "t", "tonne (metric ton)"),
    ("tonUS", "short ton", "mass", "ton[US]", "US (short) ton"),
    ("tonUK", "long ton", "mass", "ton[UK]", "UK (long) ton"),
    ("N", "newton", "force", "N", "newton"),
    ("kN", "kilonewton", "force", "kN", "kilonewton"),
    ("daN", "decanewton", "force", "daN", "decanewton"),
    ("lbf", "pound force", "force", "lbf", "pound-force"),
    ("kgf", "kilogram force", "force", "kgf", "kilogram-force"),
    ("J", "joule", "energy", "J", "joule"),
    ("kJ", "kilojoule", "energy", "kJ", "kilojoule"),
    ("MJ", "megajoule", "energy", "MJ", "megajoule"),
    ("Btu", "BTU", "energy", "Btu[IT]", "British thermal unit (IT)"),
    ("kW.h", "kWh", "energy", "kW.h", "kilowatt hour"),
    ("cal", "calorie", "energy", "cal[th]", "thermochemical calorie"),
    ("W", "watt", "power", "W", "watt"),
    ("kW", "kilowatt", "power", "kW", "kilowatt"),
    ("MW", "megawatt", "power", "MW", "megawatt"),
    ("hp", "horsepower", "power", "hp", "mechanical horsepower"),
    ("gon", "grad", "plane angle", "gon", "gon (grade, 1/400 of a turn)"),
]

# Series: name, dimension, defaults (metric, oilfield, SI), then the units in
# display order ("~" before a name hides it from pick lists; "_" is the blank
# unit). The first 21 are the series of the file before it was generated; their
# units up to "|" are those they held then, in that order.
SERIES = [
    ("dimensionless", "dimensionless", ("-", "-", "-"), "- ~_ |"),
    ("depth", "length", ("m", "ft", "m"), "m ft | ftUS"),
    ("length", "length", ("m", "ft", "m"), "m ft in cm mm km mi | ftUS um"),
    ("pressure", "pressure", ("bar", "psia", "kpa"),
     "psia psig kpa mpa bar atm kg/cm2 pa | psi ~mbar GPa ~mmHg ~inHg ~torr ~mPa"),
    ("temperature", "temperature", ("degc", "degf", "degk"), "degf degc degr degk |"),
    ("density", "density", ("kg/m3", "g/cc", "kg/m3"), "g/cc kg/m3 lb/ft3 lb/gal | g/L lbm/bbl"),
    ("viscosity", "viscosity", ("mpa.s", "cp", "pa.s"), "cp mpa.s pa.s | ~P"),
    ("gas oil ratio", "volume ratio", ("m3/m3", "scf/stb", "m3/m3"), "scf/stb mscf/stb m3/m3 |"),
    ("volume factor", "volume ratio", ("rm3/sm3", "bbl/stb", "m3/m3"), "bbl/stb rm3/sm3 m3/m3 |"),
    ("compressibility", "compressibility", ("1/bar", "1/psi", "1/kpa"), "1/psi 1/kpa 1/bar 1/mpa 1/pa |"),
    ("oil gravity", "relative density", ("sg", "api", "sg"), "api sg |"),
    ("gas gravity", "relative density", ("(air=1)", "(air=1)", "(air=1)"), "(air=1) |"),
    ("fraction", "dimensionless", ("fr", "fr", "fr"), "fr v/v vol/vol % pu ~p.u. | ppm ppk"),
    ("gas expansion", "volume ratio", ("sm3/m3", "scf/cf", "m3/m3"), "scf/cf scf/rb sm3/m3 m3/m3 |"),
    ("time", "time", ("hr", "hr", "s"), "s ms min hr day yr | wk ~us"),
    ("velocity", "velocity", ("m/s", "ft/s", "m/s"), "m/s ft/s km/s |"),
    ("slowness", "velocity", ("us/m", "us/ft", "us/m"), "us/ft us/m s/m m/s |"),
    ("area", "area", ("ha", "acre", "m2"), "m2 ft2 acre ha km2 | in2 cm2 mi2"),
    ("volume", "volume", ("m3", "bbl", "m3"),
     "bbl ft3 mcf m3 l gal | ~stb ~scf cm3 galUK acre.ft Mbbl MMbbl MMcf e3m3"),
    ("angle", "plane angle", ("deg", "deg", "rad"), "deg rad | ~gon"),
    ("permeability", "area", ("md", "md", "um2"), "md darcy um2 m2 |"),
    # --- series added when the file became generated
    ("liquid rate", "volume rate", ("m3/d", "bbl/d", "m3/d"),
     "bbl/d m3/d Mbbl/d bbl/h bbl/min m3/h m3/min L/s L/min gal/min m3/s"),
    ("gas rate", "volume rate", ("e3m3/d", "Mscf/d", "m3/d"), "Mscf/d MMscf/d scf/d m3/d e3m3/d e6m3/d m3/s"),
    ("pressure gradient", "pressure gradient", ("kPa/m", "psi/ft", "kPa/m"), "psi/ft kPa/m bar/m MPa/m psi/m Pa/m"),
    ("temperature gradient", "temperature gradient", ("degC/km", "degF/100ft", "K/km"),
     "degF/100ft degC/km degC/100m degF/ft degC/m K/km K/m"),
    ("kinematic viscosity", "kinematic viscosity", ("cSt", "cSt", "m2/s"), "cSt St mm2/s ft2/s m2/s"),
    ("penetration rate", "velocity", ("m/h", "ft/h", "m/h"), "ft/h m/h ft/min m/min m/s"),
    ("darcy velocity", "velocity", ("m/d", "ft/d", "m/s"), "ft/d m/d m/s"),
    ("resistivity", "resistivity", ("ohm.m", "ohm.m", "ohm.m"), "ohm.m ohm.cm"),
    ("conductivity", "conductivity", ("mS/m", "mS/m", "S/m"), "mS/m S/m mS/cm"),
    ("gamma ray", "api gamma ray", ("gAPI", "gAPI", "gAPI"), "gAPI"),
    ("concentration", "density", ("mg/L", "mg/L", "kg/m3"), "mg/L g/L kg/m3 lbm/bbl"),
    ("mass", "mass", ("kg", "lbm", "kg"), "kg lbm g t klbm tonUS tonUK"),
    ("force", "force", ("kN", "lbf", "N"), "lbf N kN daN kgf"),
    ("energy", "energy", ("kJ", "Btu", "J"), "Btu J kJ MJ kW.h cal"),
    ("power", "power", ("kW", "hp", "W"), "hp W kW MW"),
]

# Units of one series whose names differ only in letter case: the exact case
# tells them apart when a user types one (megapascal "mpa" and millipascal "mPa").
CASE_TWINS = {("pressure", "mpa", "mPa")}

HEADER = """\
# x_units.def - dimensions, units and unit series of the units registry.
#
# GENERATED by scripts/make_units_def.py from its unit catalogue and the
# conversion factors of the Energistics Unit of Measure Standard 1.0 kept in
# data/uom-factors.csv. Edit the script, not this file.
#
# Read once at start-up. Lines starting with "#" are comments and blank lines
# are ignored; every other line is a comma-separated row. A row whose first
# field starts with "**" opens a section. The section is recognised by the
# first of the fragments "imens", "nits", "eries", "ntries" found in its header
# (in that order), so the headers are **Dimensions, **Units, **Series and
# **Entries; a header such as "**Series entries" would be read as a series
# section.
#
# **Dimensions      dim_id, dim_name (32 characters)
# **Units           unit_id, unit_name (16), unit_oname (16), unit_dim, unit_nc,
#                   unit_c1, unit_c2, unit_c3, unit_c4, description (60)
#                   A value u in the unit and the value v in the dimension's SI
#                   unit are related by  v = c4 * (c1 * (u + c2)) ^ c3 ; only the
#                   first unit_nc coefficients apply. Reciprocal units (slowness
#                   against velocity, API gravity against specific gravity) use
#                   c3 = -1.
# **Series          ser_id (from 0), ser_name (20), ser_dim, first entry,
#                   last entry, unit count, metric default, oilfield default,
#                   SI default (default unit names of the three unit systems)
# **Entries         entry, unit_id, reserved (0), listing flag (0 = offered in
#                   unit pick lists, 1 = accepted but hidden from pick lists)
#
# A unit's position in its series (iun) is its place among the series' entries,
# from 1. A blank unit name is written as " ".
#
# Rules the conversion arithmetic relies on (the generator checks them):
#  * A unit whose unit_id equals the first-entry number of a series holding it
#    is taken as the dimension's SI unit (its coefficients are not applied), so
#    such a coincidence is only allowed for a unit with c1 = 1 and no other
#    coefficient.
#  * Two units of a series whose exponents differ (a velocity and a slowness)
#    and have no offsets are converted directly as each other's reciprocal,
#    which is only exact for a pair whose c1 values multiply to 1 (m/s and s/m).
#    The other slowness units therefore carry a fourth coefficient (c4 = 1):
#    that sends their conversions through the SI unit, which is exact.
#
# Gas volumes: "scf" and the other gas units convert as plain volumes (1 scf =
# 1 ft3); the standard conditions behind them are set out in docs/units.md.
"""


def fail(message):
    sys.exit("make_units_def.py: " + message)


def text(value):
    """A text field: quoted when it holds a comma, a quote or edge blanks."""
    if value == " " or "," in value or '"' in value or value != value.strip():
        return '"' + value.replace('"', '""') + '"'
    return value


def number(value):
    return repr(float(value)) if value != int(value) or abs(value) >= 1e16 else str(int(value))


def read_factors(path):
    with open(path, newline="") as f:
        return {row["symbol"]: row for row in csv.DictReader(f)}


def symbols_of(source):
    if isinstance(source, str):
        return [source]
    if source[0] in ("per", "reciprocal"):
        return [source[1]]
    if source[0] == "gauge":
        return [source[1], source[2]]
    return []


def linear(factors, symbol):
    """(scale, offset, base) of a data row, y = scale * (x + offset) in base,
    worked in exact fractions of the data's decimal numbers."""
    row = factors.get(symbol)
    if row is None:
        fail(f"no factor for {symbol!r} in {FACTORS} (refresh it with --factors-from)")
    base = row["baseUnit"]
    if base == "IS-BASE":
        return Fraction(1), Fraction(0), BASE_EQUIVALENTS.get(symbol, symbol)
    a, b, c, d = (Fraction(row[k]) for k in "ABCD")
    if d != 0 or b == 0:
        fail(f"{symbol}: not a scale and an offset")
    return b / c, a / b, BASE_EQUIVALENTS.get(base, base)


def coefficients(factors, unit, dims):
    """nc, c1, c2, c3, c4 of a unit against its dimension's base unit, each
    rounded once from its exact value."""
    name, _, dim, source, _ = unit
    base, reciprocal_base = dims[dim]
    if isinstance(source, tuple) and source[0] == "defined":
        return 3, float(source[1]), float(source[2]), float(source[3]), 1.0
    kind = source[0] if isinstance(source, tuple) else "plain"
    scale, offset, got = linear(factors, symbols_of(source)[0])
    if kind == "per":
        if offset != 0:
            fail(f"{name}: the reciprocal of a unit with an offset")
        scale, got = 1 / scale, "1/" + got
    elif kind == "gauge":
        zero, zero_offset, zero_base = linear(factors, source[2])
        if offset != 0 or zero_offset != 0 or zero_base != got:
            fail(f"{name}: a gauge unit needs two plain pressures")
        offset = zero / scale
    expected = reciprocal_base if kind == "reciprocal" else base
    if got != expected:
        fail(f"{name}: the data's base unit is {got}, its dimension {dim} has {expected}")
    if kind == "reciprocal":
        return (3 if scale == 1 else 4), float(scale), 0.0, -1.0, 1.0
    return (2 if offset != 0 else 1), float(scale), float(offset), 1.0, 1.0


def build(factors):
    """The tables: dimension ids, units in id order with their coefficients,
    series rows and series entries."""
    dims = {name: (base, recip) for name, base, recip in DIMENSIONS}
    dim_ids = {name: k + 1 for k, (name, _, _) in enumerate(DIMENSIONS)}
    catalogue = {}  # (dimension, name) -> place in UNITS
    for k, unit in enumerate(UNITS):
        name, oname, dim = unit[0], unit[1], unit[2]
        if dim not in dims:
            fail(f"{name}: unknown dimension {dim}")
        if (dim, name) in catalogue:
            fail(f"{name}: defined twice in {dim}")
        if len(name) > 16 or len(oname) > 16:
            fail(f"{name}: a name longer than 16 characters")
        catalogue[(dim, name)] = k

    # Series members (places in UNITS) and the first-entry number of each series.
    layout, first = [], 1
    for sname, dim, defaults, members_text in SERIES:
        if len(sname) > 20:
            fail(f"series {sname}: name longer than 20 characters")
        members = []
        for word in members_text.replace("|", " ").split():
            hidden = word.startswith("~")
            name = word[1:] if hidden else word
            name = " " if name == "_" else name
            if (dim, name) not in catalogue:
                fail(f"series {sname}: {name!r} is not a unit of {dim}")
            members.append((catalogue[(dim, name)], 1 if hidden else 0))
        names = [UNITS[k][0] for k, _ in members]
        for d in defaults:
            if d not in names:
                fail(f"series {sname}: default {d} is not one of its units")
        lowered = {}
        for n in names:
            twin = lowered.setdefault(n.lower(), n)
            if twin != n and (sname, twin, n) not in CASE_TWINS:
                fail(f"series {sname}: {twin} and {n} differ only in letter case")
        layout.append((sname, dim, defaults, members, first))
        first += len(members)

    # Unit ids: the units of the file before it was generated keep theirs; the
    # others are numbered in catalogue order, except that a unit is never given
    # the first-entry number of a series that holds it (see the rules above):
    # it waits for the next number.
    firsts = {}
    for _, _, _, members, f in layout:
        firsts.setdefault(f, set()).update(k for k, _ in members)
    ids = {k: k + 1 for k in range(KEPT_UNITS)}
    waiting, next_id = list(range(KEPT_UNITS, len(UNITS))), KEPT_UNITS + 1
    while waiting:
        k = next((k for k in waiting if k not in firsts.get(next_id, ())), None)
        if k is None:
            fail(f"no unit can take id {next_id}")
        waiting.remove(k)
        ids[k] = next_id
        next_id += 1
    order = sorted(range(len(UNITS)), key=lambda k: ids[k])

    coefs = {k: coefficients(factors, UNITS[k], dims) for k in range(len(UNITS))}
    units = [(UNITS[k], coefs[k]) for k in order]
    series, entries = [], []
    for iser, (sname, dim, defaults, members, f) in enumerate(layout):
        entries.extend((ids[k], hidden) for k, hidden in members)
        series.append((iser, sname, dim_ids[dim], f, len(entries), defaults))
    check_rules(series, entries, [c for _, c in units], [u for u, _ in units])
    return dim_ids, units, series, entries


def check_rules(series, entries, coefs, units):
    for iser, sname, _, first, last, _ in series:
        members = [entries[n - 1][0] for n in range(first, last + 1)]
        for uid in members:
            nc, c1 = coefs[uid - 1][0], coefs[uid - 1][1]
            if uid == first and not (nc == 1 and c1 == 1.0):
                fail(f"series {sname}: unit {units[uid - 1][0]} has the id of the series' first entry")
        for f in members:
            for t in members:
                nf, f1, f2, f3, _ = coefs[f - 1]
                nt, t1, t2, t3, _ = coefs[t - 1]
                direct = nf != 4 and nt != 4 and abs(f3 - t3) > 0.01 and f2 == 0 and t2 == 0 and f3 >= 0.5
                if direct and abs(f1 * t1 - 1.0) > 1e-12:
                    fail(f"series {sname}: {units[f - 1][0]} to {units[t - 1][0]} would take the reciprocal "
                         "rule without being exact")


def definitions_text(factors):
    dim_ids, units, series, entries = build(factors)
    out = io.StringIO()
    out.write(HEADER)
    out.write("\n**Dimensions\n# dim_id, dim_name\n")
    for name, k in dim_ids.items():
        out.write(f"{k},{name}\n")
    out.write("\n**Units\n# unit_id, unit_name, unit_oname, unit_dim, unit_nc, unit_c1, unit_c2, unit_c3, unit_c4,"
              " description\n")
    for k, (unit, (nc, c1, c2, c3, c4)) in enumerate(units):
        name, oname, dim, _, description = unit
        fields = [str(k + 1), text(name), text(oname), str(dim_ids[dim]), str(nc),
                  number(c1), number(c2), number(c3), number(c4), text(description)]
        out.write(",".join(fields) + "\n")
    out.write("\n**Series\n# ser_id, ser_name, ser_dim, first entry, last entry, unit count, metric default,"
              " oilfield default, SI default\n")
    for iser, sname, dim, first, last, (metric, oilfield, si) in series:
        out.write(",".join([str(iser), text(sname), str(dim), str(first), str(last), str(last - first + 1),
                            text(metric), text(oilfield), text(si)]) + "\n")
    out.write("\n**Entries\n# entry, unit_id, reserved, listing flag (0 listed in pick lists, 1 hidden)\n")
    for iser, sname, _, first, last, _ in series:
        out.write(f"# {sname}\n")
        for n in range(first, last + 1):
            uid, hidden = entries[n - 1]
            out.write(f"{n},{uid},0,{hidden}\n")
    return out.getvalue()


def sources_text(units):
    out = io.StringIO()
    out.write("unit_id,unit_name,kind,symbol,zero\n")
    for k, ((name, _, _, source, _), _) in enumerate(units):
        if isinstance(source, str):
            kind, symbol, zero = "plain", source, ""
        elif source[0] == "defined":
            kind, symbol, zero = "defined", "", ""
        else:
            kind, symbol, zero = source[0], source[1], (source[2] if source[0] == "gauge" else "")
        out.write(",".join([str(k + 1), text(name), kind, text(symbol), text(zero)]) + "\n")
    return out.getvalue()


def factors_text(full_table):
    """The rows of the full table that the catalogue uses, with the columns kept."""
    wanted = set()
    for unit in UNITS:
        for s in symbols_of(unit[3]):
            wanted.add(s)
    wanted.update(base for _, base, _ in DIMENSIONS)
    wanted.update(recip for _, _, recip in DIMENSIONS if recip)
    wanted.update(BASE_EQUIVALENTS)
    out = io.StringIO()
    out.write("symbol,baseUnit,A,B,C,D\n")
    for symbol in sorted(wanted):
        row = full_table.get(symbol)
        if row is None:
            fail(f"{symbol!r} is not in the table given")
        out.write(",".join([text(symbol), text(row["baseUnit"])] + [row[k] for k in "ABCD"]) + "\n")
    return out.getvalue()


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--check", action="store_true", help="fail if the files in data/ are not up to date")
    parser.add_argument("--factors-from", metavar="CSV", help="refresh data/uom-factors.csv from the full table")
    args = parser.parse_args()

    if args.factors_from:
        with open(args.factors_from, newline="") as f:
            table = {row["symbol"]: row for row in csv.DictReader(f)}
        with open(FACTORS, "w", newline="") as f:
            f.write(factors_text(table))
    factors = read_factors(FACTORS)
    units = build(factors)[1]
    outputs = {OUTPUT: definitions_text(factors), SOURCES: sources_text(units)}
    if args.check:
        stale = [p for p, t in outputs.items() if not os.path.exists(p) or open(p, newline="").read() != t]
        if stale:
            fail("not up to date: " + ", ".join(os.path.relpath(p, ROOT) for p in stale))
        return
    for path, content in outputs.items():
        tmp = path + ".tmp"
        with open(tmp, "w", newline="") as f:
            f.write(content)
        os.replace(tmp, path)


if __name__ == "__main__":
    main()
