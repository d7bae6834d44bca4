rain <- read.csv("data/precip.csv")$inches
set.seed(1)
medians <- replicate(9999, median(sample(rain, replace = TRUE)))
median(rain); sd(medians); quantile(medians, c(0.025, 0.975))              # percentile; BCa is in a package
ratios <- replicate(999, { x <- sample(rain, replace = TRUE); sd(x) / mean(x) })
quantile(ratios, c(0.025, 0.975))
