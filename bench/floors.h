// Floors: the least that each piece of work could cost, done by itself. None of them calls the library.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

// Goes from record header to record header from `from` up to `to`, by the length fields alone. Returns how many there are.
uint32_t ChaseHeaders(const uint8_t* stream, uint32_t from, uint32_t to);

// Turns numbers into text with six decimals by std::to_chars, one after the other into the same place. Returns the number of characters.
size_t NumbersToChars(const std::vector<double>& numbers);

// Copies each text into an allocation of its own, which goes to `*copies`; FreeCopies releases them.
void CopyTexts(const std::vector<std::string>& texts, std::vector<void*>* copies);
void FreeCopies(std::vector<void*>* copies);

// Reads a whole file into `*bytes`, which has its size already.
void ReadWhole(const std::string& path, std::vector<uint8_t>* bytes);

// Copies bytes into `*copy`, which has their size already.
void CopyBytes(const std::vector<uint8_t>& bytes, std::vector<uint8_t>* copy);

// Writes a file anew and waits until it is on the disk.
void WriteAndSync(const std::string& path, const std::vector<uint8_t>& bytes);

}  // namespace bench
