# Decimal entry and unit conversion on any text.
capochords_fuzz(units_fuzz units_fuzz.cpp)
