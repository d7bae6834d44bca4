waiting <- read.csv("data/faithful.csv")$waiting
count <- table(cut(waiting, 10 * (4:10), right = FALSE))
data.frame(count, share = as.vector(count) / sum(count), up_to = cumsum(as.vector(count)) / sum(count))
svg("frequency_table.svg"); hist(waiting, 10 * (4:10), right = FALSE, xlab = "minutes"); dev.off()
