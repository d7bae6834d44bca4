#!/usr/bin/env Rscript
# Values of R's own functions on R's own data sets: Rscript tests/reference/r_values.R > tests/reference/data/r_values.txt
#
# The values kept are R 4.2.2's.
# A line is a statement of the language, or a call, a tab and the numbers that it gives.  "# relative" and
# "# absolute" lines state how near the numbers after them are to be.

show <- function(v) paste(sprintf("%.17g", v), collapse = " ")
listed <- function(v) paste0("[", paste(sprintf("%.17g", v), collapse = ", "), "]")
define <- function(name, v) cat(name, " := Array(", listed(v), ", datatype = float[8])\n", sep = "")
row <- function(entry, arguments, v) cat("STATS_Vexel", entry, "_HW(", arguments, ")\t", show(v), "\n", sep = "")

ozone <- airquality$Ozone[!is.na(airquality$Ozone)]
samples <- list(rain = as.numeric(precip), lake = as.numeric(LakeHuron), eruptions = faithful$eruptions,
                ozone = ozone)

cat("none := Array(1..0, datatype = float[8])\n")
for (name in names(samples)) define(name, samples[[name]])

cat("# relative 1e-14\n")
# R's types in the order of ours.  Its type 3 goes to the even rank at a tie, ours up: no ties here.
types <- c(1, 3, 4, 5, 6, 7, 8, 9)
probs <- c(0, 0.013, 0.1, 0.27, 0.5, 0.61, 0.9, 0.987, 1)
for (name in names(samples)) {
  x <- samples[[name]]
  for (k in seq_along(types)) {
    p <- if (k == 2) setdiff(probs, 0.5) else probs
    row("Quantile", sprintf("%s, %s, none, false, %d, false", name, listed(p), k),
        quantile(x, p, type = types[k], names = FALSE))
  }
  row("Median", paste0(name, ", none, false, false"), median(x))
  row("MedianDeviation", paste0(name, ", none, false"), mad(x, constant = 1))
  row("FivePointSummary", paste0(name, ", false"), fivenum(x))
  for (w in if (name == "lake") c(3, 9, 31) else 9)
    row("MovingMedian", sprintf("%s, %d, %d, none, false, false", name, w, w %/% 2),
        runmed(x, w, endrule = "keep")[1:(length(x) - w %/% 2)])
}

cat("# relative 1e-12\n")
n <- length(ozone)
years <- seq_along(samples$lake)
sums <- cov(cbind(samples$lake, years)) * 97
row("Covariance", "lake, Array([seq(i, i = 1 .. 98)]), none, 1", c(sums[1, 2], diag(sums), 98))
taps <- c(0.5, 0.25, -0.125)
define("taps", taps)
start <- c(40, 30)  # the latest first, as there
define("start", start)
row("LinearFilter", "ozone, taps, start, false, false",
    filter(c(rev(start), ozone), taps, method = "convolution", sides = 1)[-(1:2)])
row("LinearFilter", "ozone, taps, start, true, false",
    filter(taps[1] * ozone, taps[-1], method = "recursive", init = start))
row("MovingMean", "ozone, 7, 3, none, false, 0, false",
    c(ozone[1:3], filter(ozone, rep(1 / 7, 7), sides = 2)[4:(n - 3)]))
row("Cumulative", "ozone, none, none, 0", cumsum(ozone))
row("Cumulative", "eruptions, none, none, 1", cumprod(samples$eruptions))

cat("# relative 1e-10\n")
for (name in names(samples)) row("ShapiroWilk", paste0(name, ", none, true"),
                                 unlist(shapiro.test(samples[[name]])[c("statistic", "p.value")]))
for (n in c(3, 4, 5, 6, 10, 11, 12, 25, 500, 5000))
  for (power in c(1, 2, 0.5))
    row("ShapiroWilk", sprintf("Array([seq(i^%s, i = 1 .. %d)], datatype = float[8]), none, true",
                               if (power == 0.5) "(1/2)" else power, n),
        unlist(shapiro.test((1:n)^power)[c("statistic", "p.value")]))

# Both bin onto a grid and go through a Fourier transform, on grids of their own.
kernels <- c("gaussian", "triangular", "rectangular", "epanechnikov", "biweight")
M <- 16384
at <- seq(2001, 14001, by = 1500)
for (k in seq_along(kernels)) {
  cat(if (kernels[k] == "rectangular") "# absolute 2e-3\n" else "# absolute 2e-5\n")
  d <- density(samples$eruptions, bw = 0.25, kernel = kernels[k], n = M, from = -1, to = 8)
  cat(sprintf("d := STATS_VexelKernelDensity_HW(eruptions, none, %d, 0.25, %d, true, -1, 8)\n", k - 1, M))
  cat("map(j -> d[j], [", paste(at, collapse = ", "), "])\t", show(d$y[at]), "\n", sep = "")
}
